// A cursor over a parsed JSON value that knows the path to it, so that each kind of check stands
// once and every refusal names its place.

#ifndef AGENT_FORMATS_JSONFIELD_H
#define AGENT_FORMATS_JSONFIELD_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace agent {

// One value, or the place of one that was left out. Every accessor throws Refusal for a value of
// the wrong kind, and gives the fallback for one that was left out.
//
// Borrows parent, name and value; paths are only put together when something is refused.
// Thread-safety: none needed, nothing is ever changed.
class JsonField {
 public:
  JsonField(const JsonField* parent, std::string_view name, const nlohmann::json* value)
      : parent_(parent), name_(name), value_(value) {}
  JsonField(const JsonField* parent, std::size_t index, const nlohmann::json* value)
      : parent_(parent), index_(index), value_(value) {}

  // Such as topoNodes[3].parent.
  std::string path() const;
  [[noreturn]] void throwRefusal(const std::string& reason) const;

  bool isPresent() const { return value_ != nullptr; }
  const JsonField& required() const;

  // This is an object with no other fields than these.
  void requireFieldsAmong(const std::vector<std::string>& names) const;
  JsonField member(const char* name) const;

  // The number of entries of this list, 0 when it was left out.
  std::size_t size() const;
  // Left out, or a list of exactly so many entries; true when it is there.
  bool isListOf(std::size_t entries) const;
  JsonField entry(std::size_t index) const;

  std::string text() const;
  bool flag() const;
  std::int32_t int32() const;
  std::uint32_t uint32(std::uint32_t fallback) const;

 private:
  [[noreturn]] void throwWrongKind(const char* wanted) const;
  void requireObject() const;

  template <typename Integer>
  Integer number(Integer fallback) const;

  const JsonField* parent_;
  std::string_view name_;  // empty for an entry of a list
  std::size_t index_ = 0;
  const nlohmann::json* value_;
};

}  // namespace agent

#endif
