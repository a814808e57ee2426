// A map from keys to texts, read from a text file that operators edit while the agent runs.
//
// Each line is KEY;VALUE.
//   - Only the first ";" separates.
//   - A line that begins with ";" is ignored.
//   - A line without ";" is key and value.
//   - White space and carriage returns are part of key and value.
//   - The last line of a key counts.
//
// Every lookup reads the file again, unless the file is on a local file system and unchanged since
// the last complete reading (FileStamp). An entry is never removed: a key that disappears from the
// file keeps its last value.
//
// Thread-safety: none; the caller serialises the lookups (UserLabels). Ownership: owns the entries;
// the file belongs to the operator. Errors: a file that cannot be read is not an error; the lookup
// then uses the entries of earlier reads. std::bad_alloc passes.

#ifndef TOPOMANAGEMENTMGR_USERLABELMAP_H
#define TOPOMANAGEMENTMGR_USERLABELMAP_H

#include <fstream>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "topomanagementmgr/FileStamp.h"

// Record: the type of the objects that the labels belong to. The data does not depend on it.
template <typename Record>
class UserlabelMap {
 public:
  // With an empty file name, the map stays empty and no file is created.
  explicit UserlabelMap(std::string fileName,
                        topo::FileStamp::Clock clock = topo::FileStamp::systemClock)
      : fileName_(std::move(fileName)), clock_(clock) {}
  virtual ~UserlabelMap() = default;

  UserlabelMap(const UserlabelMap&) = delete;
  UserlabelMap& operator=(const UserlabelMap&) = delete;

  // Calls LoadFile, then assigns the value of a key. A missing key leaves `value` unchanged.
  void GetValue(std::string& value, const std::string& key) {
    LoadFile();
    const auto entry = entries_.find(key);
    if (entry != entries_.end()) {
      value = entry->second;
    }
  }

  // Merges the lines of the file into the entries. Creates a missing file. Does not read a file
  // that cannot be opened for writing. Returns whether the file was read.
  bool LoadFile() {
    if (fileName_.empty()) {
      return false;
    }
    const std::optional<topo::FileStamp> stamp = topo::FileStamp::of(fileName_, clock_);
    if (stamp && read_ && *stamp == *read_) {
      return false;
    }
    read_.reset();
    std::fstream file(fileName_, std::ios::in | std::ios::out);
    if (!file.is_open()) {
      file.open(fileName_, std::ios::in | std::ios::out | std::ios::app);
      return false;
    }
    // The name may have been given to another file between the stamp and the opening.
    if (Merge(file) && stamp && stamp->isSettled() &&
        topo::FileStamp::recordsEveryChange(fileName_) &&
        stamp == topo::FileStamp::of(fileName_, clock_)) {
      read_ = stamp;
    }
    return true;
  }

 protected:
  // Merges the lines of a stream into the entries. Returns whether all lines were read: a read
  // failure ends the merge, and the lines before the failure count.
  bool Merge(std::istream& lines) {
    // With badbit set here, the stream rethrows std::bad_alloc of its buffer.
    lines.exceptions(std::ios::badbit);
    try {
      std::string line;
      while (std::getline(lines, line)) {
        store(line);
      }
      return true;
    } catch (const std::ios_base::failure&) {
      return false;
    }
  }

 private:
  void store(const std::string& line) {
    const std::size_t separator = line.find(';');
    if (separator == 0) {
      return;
    }
    if (separator == std::string::npos) {
      entries_[line] = line;
    } else {
      entries_[line.substr(0, separator)] = line.substr(separator + 1);
    }
  }

  const std::string fileName_;
  const topo::FileStamp::Clock clock_;
  std::map<std::string, std::string> entries_;
  // The file that was read last, when each later change of the file will give another stamp.
  std::optional<topo::FileStamp> read_;
};

#endif
