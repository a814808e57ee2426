// A value of a parsed JSON document together with its path. Part of the oracle PlainJsonNetwork.

#ifndef TESTS_PROPERTY_PLAINJSONFIELD_H
#define TESTS_PROPERTY_PLAINJSONFIELD_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace plain {

// A value, or the place of a missing value. An accessor returns its fallback for a missing value.
//
// Thread-safety: any thread; immutable. Ownership: borrows parent, name and value, which outlive
// the field. Errors: throws agent::ParseError for a value of the wrong kind or range.
class JsonField {
 public:
  JsonField(const JsonField* parent, std::string_view name, const nlohmann::json* value)
      : parent_(parent), name_(name), value_(value) {}
  JsonField(const JsonField* parent, std::size_t index, const nlohmann::json* value)
      : parent_(parent), index_(index), value_(value) {}

  // Such as topoNodes[3].parent.
  std::string path() const;
  [[noreturn]] void fail(const std::string& reason) const;

  bool isPresent() const { return value_ != nullptr; }
  const JsonField& required() const;

  // Fails unless the value is an object without other fields.
  void requireFieldsAmong(const std::vector<std::string>& names) const;
  JsonField member(const char* name) const;

  // The number of entries of this list; 0 for a missing value.
  std::size_t size() const;

  // True for a list of the given length, false for a missing value. Fails for any other value.
  bool isListOf(std::size_t entries) const;
  JsonField entry(std::size_t index) const;

  std::string text() const;
  bool flag() const;
  std::int32_t int32() const;
  std::uint32_t uint32(std::uint32_t fallback) const;

 private:
  [[noreturn]] void failKind(const char* wanted) const;
  void requireObject() const;

  template <typename Integer>
  Integer number(Integer fallback) const;

  const JsonField* parent_;
  std::string_view name_;  // empty for an entry of a list
  std::size_t index_ = 0;
  const nlohmann::json* value_;
};

}  // namespace plain

#endif
