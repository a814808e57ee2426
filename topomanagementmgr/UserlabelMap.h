// A dictionary kept in a text file that people edit while the agent runs.
//
// One entry a line: key, ";", value. Only the first ";" separates. A line that begins with ";" is
// skipped; a line without ";" is key and value at once. Nothing is trimmed, a carriage return
// included. Later lines win.
//
// The file is read again before every lookup. Entries are never forgotten: a key that leaves the
// file keeps its last value for as long as the map lives.
//
// Thread-safety: none; the caller serialises lookups.

#ifndef TOPOMANAGEMENTMGR_USERLABELMAP_H
#define TOPOMANAGEMENTMGR_USERLABELMAP_H

#include <fstream>
#include <istream>
#include <map>
#include <string>
#include <utility>

// Record is the kind of object that the labels are for; one map a kind.
template <typename Record>
class UserlabelMap {
 public:
  // With an empty file name nothing is ever read.
  explicit UserlabelMap(std::string fileName) : fileName_(std::move(fileName)) {}
  virtual ~UserlabelMap() = default;

  UserlabelMap(const UserlabelMap&) = delete;
  UserlabelMap& operator=(const UserlabelMap&) = delete;

  // Reloads, then assigns the value of a key. An absent key leaves value alone.
  void GetValue(std::string& value, const std::string& key) {
    LoadFile();
    const auto entry = entries_.find(key);
    if (entry != entries_.end()) {
      value = entry->second;
    }
  }

  // Merges the file into the entries. A file that is missing is created empty; one that cannot be
  // opened for writing is not read. Neither is an error.
  void LoadFile() {
    std::fstream file(fileName_, std::ios::in | std::ios::out);
    if (!file.is_open()) {
      file.open(fileName_, std::ios::in | std::ios::out | std::ios::app);
      return;
    }
    Merge(file);
  }

 protected:
  // Merges the lines of a stream into the entries. A read failure ends the reading quietly; the
  // lines before it are kept. Allocation failures pass.
  void Merge(std::istream& lines) {
    // A stream keeps every exception of its buffer to itself unless it is told to pass it on.
    lines.exceptions(std::ios::badbit);
    try {
      std::string line;
      while (std::getline(lines, line)) {
        store(line);
      }
    } catch (const std::ios_base::failure&) {
      // Whatever could not be read now is read at the next lookup.
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
  std::map<std::string, std::string> entries_;
};

#endif
