// Reads one value of a network file, such as an entry of a list, from the events of the JSON
// parser. Part of the network reader.

#ifndef AGENT_FORMATS_JSONVALUEREADER_H
#define AGENT_FORMATS_JSONVALUEREADER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "agent/formats/JsonTarget.h"

namespace agent {

// A field of a record.
struct JsonFieldRule {
  std::string_view name;
  bool isRequired = false;
};

constexpr std::size_t kMostJsonFields = 7;

// The targets of the fields of a record, in the order of the fields.
using JsonTargets = std::array<JsonTarget, kMostJsonFields>;

// Assigns the parts of a value to the variables of the targets, and keeps only the names of unknown
// fields, so the size of the file bounds the memory.
//
// The caller reports the events of one value between start() and check(). A value that is nested
// too deeply or has a field twice fails at once. check() reports other failures, so that a syntax
// error in the same value is reported instead.
//
// Thread-safety: none. Ownership: borrows names, rules and the variables of the targets until the
// next start(). Errors: throws ParseError; the reader accepts no further event then.
class JsonValueReader {
 public:
  // Starts the value of a field of the top level, or the entry of a list. REQUIRES: no value is
  // open.
  void start(std::string_view field, const JsonTarget& target);
  void startEntry(std::string_view list, std::size_t index);

  // Opens the object of an entry. REQUIRES: startEntry() preceded; at most kMostJsonFields fields.
  void openRecord(const std::vector<JsonFieldRule>& fields, const JsonTargets& targets);

  void scalar(const JsonScalar& value);
  void open(JsonContainer container);
  void key(const std::string& name);
  void close();

  bool isOpen() const { return !frames_.empty(); }

  // Throws for the first failure in this order: unknown fields alphabetically, then the fields of
  // the record in the order of their rules. REQUIRES: the value is complete.
  void check() const;

  // Throws with the place of the value.
  [[noreturn]] void fail(const std::string& reason) const;

 private:
  enum class FrameKind { kRecord, kPair, kPairs, kIgnoredObject, kIgnoredList };

  // An open container. position: of the current value in the fields of a record or in a list.
  struct Frame {
    FrameKind kind;
    std::size_t position;
  };

  // The failure of a field. path: from the value to the failing part.
  struct Failure {
    std::size_t field;
    std::string path;
    std::string reason;
  };

  [[noreturn]] void failTwice(const std::string& name) const;
  std::string place() const;
  std::string path() const;
  void checkFields() const;
  void selectField(const std::string& name);
  JsonTarget target() const;
  FrameKind enter(const JsonTarget& target, JsonContainer container);
  FrameKind ignore(JsonContainer container);
  FrameKind enterPair(const JsonTarget& first, const JsonTarget& second);
  void closePair(std::size_t entries);
  void finishValue();
  std::size_t currentField() const;
  bool isPreceded() const;
  bool isInPairs() const;
  void note(const std::string& reason);

  std::string_view field_;
  std::optional<std::size_t> index_;  // in the list field_
  JsonTarget root_;

  const std::vector<JsonFieldRule>* fields_ = nullptr;  // of the record; null for another value
  JsonTargets targets_;
  std::uint32_t seen_ = 0;         // a bit for each field of the record
  std::set<std::string> unknown_;  // other fields of the record

  std::vector<Frame> frames_;                        // outermost first
  std::vector<std::set<std::string>> ignoredNames_;  // the fields of each open kIgnoredObject

  JsonTextPairs* pairs_ = nullptr;  // of the open kPairs
  std::array<JsonTarget, 2> pair_;  // of the open kPair
  std::array<std::string, 2> texts_;
  std::optional<Failure> pairFailure_;  // of the values of the open kPair; a wrong length precedes
  std::optional<Failure> failure_;      // the first in the order of the fields
};

}  // namespace agent

#endif
