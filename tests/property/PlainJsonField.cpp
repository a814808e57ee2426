#include "tests/property/PlainJsonField.h"

#include <algorithm>
#include <limits>

#include "agent/base/PrintableText.h"
#include "agent/formats/ParseError.h"

namespace plain {
namespace {

using Json = nlohmann::json;

const char* kindOf(const Json& value) {
  switch (value.type()) {
    case Json::value_t::object:
      return "an object";
    case Json::value_t::array:
      return "a list";
    case Json::value_t::string:
      return "a text";
    case Json::value_t::boolean:
      return "true or false";
    case Json::value_t::null:
      return "null";
    default:
      return "a number";
  }
}

template <typename Integer>
bool isWithin(const Json& value) {
  constexpr std::int64_t kLeast = std::numeric_limits<Integer>::min();
  constexpr std::int64_t kMost = std::numeric_limits<Integer>::max();
  if (value.is_number_unsigned()) {
    return value.get<std::uint64_t>() <= static_cast<std::uint64_t>(kMost);
  }
  // The parser gives fractions, exponents and integers beyond 64 bits as floating point.
  return value.is_number_integer() && value.get<std::int64_t>() >= kLeast &&
         value.get<std::int64_t>() <= kMost;
}

}  // namespace

std::string JsonField::path() const {
  const std::string before = parent_ == nullptr ? "" : parent_->path();
  if (name_.empty()) {
    return before + '[' + std::to_string(index_) + ']';
  }
  return before + (before.empty() ? "" : ".") + std::string(name_);
}

void JsonField::fail(const std::string& reason) const {
  throw agent::ParseError(path(), reason);
}

void JsonField::failKind(const char* wanted) const {
  fail(std::string("must be ") + wanted + ", not " + kindOf(*value_));
}

const JsonField& JsonField::required() const {
  if (!isPresent()) {
    fail("is missing");
  }
  return *this;
}

void JsonField::requireObject() const {
  if (!value_->is_object()) {
    failKind("an object");
  }
}

void JsonField::requireFieldsAmong(const std::vector<std::string>& names) const {
  requireObject();
  for (const auto& [name, value] : value_->get_ref<const Json::object_t&>()) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      fail("has the unknown field " + agent::inQuotes(name));
    }
  }
}

JsonField JsonField::member(const char* name) const {
  const auto found = value_->find(name);
  return JsonField(this, std::string_view(name), found == value_->end() ? nullptr : &*found);
}

std::size_t JsonField::size() const {
  if (isPresent() && !value_->is_array()) {
    failKind("a list");
  }
  return isPresent() ? value_->size() : 0;
}

bool JsonField::isListOf(std::size_t entries) const {
  const std::size_t found = size();
  if (isPresent() && found != entries) {
    fail("must have " + std::to_string(entries) + " entries, not " + std::to_string(found));
  }
  return isPresent();
}

JsonField JsonField::entry(std::size_t index) const {
  return JsonField(this, index, &(*value_)[index]);
}

std::string JsonField::text() const {
  if (!isPresent()) {
    return {};
  }
  if (!value_->is_string()) {
    failKind("a text");
  }
  const auto& text = value_->get_ref<const std::string&>();
  if (text.find('\0') != std::string::npos) {
    fail("contains a NUL character");
  }
  return text;
}

bool JsonField::flag() const {
  if (isPresent() && !value_->is_boolean()) {
    failKind("true or false");
  }
  return isPresent() && value_->get<bool>();
}

template <typename Integer>
Integer JsonField::number(Integer fallback) const {
  if (!isPresent()) {
    return fallback;
  }
  if (!value_->is_number()) {
    failKind("a whole number");
  }
  if (!isWithin<Integer>(*value_)) {
    fail("must be a whole number from " + std::to_string(std::numeric_limits<Integer>::min()) +
         " to " + std::to_string(std::numeric_limits<Integer>::max()) + ", not " + value_->dump());
  }
  return value_->get<Integer>();
}

std::int32_t JsonField::int32() const {
  return number<std::int32_t>(0);
}

std::uint32_t JsonField::uint32(std::uint32_t fallback) const {
  return number(fallback);
}

}  // namespace plain
