#include "agent/formats/JsonTarget.h"

#include <limits>
#include <nlohmann/json.hpp>

namespace agent {
namespace {

constexpr const char* kText = "a text";
constexpr const char* kFlag = "true or false";
constexpr const char* kNumber = "a whole number";
constexpr const char* kList = "a list";
constexpr const char* kObject = "an object";

struct KindOf {
  const char* operator()(std::nullptr_t) const { return "null"; }
  const char* operator()(bool) const { return kFlag; }
  const char* operator()(std::string_view) const { return kText; }
  template <typename Number>
  const char* operator()(Number) const {
    return "a number";
  }
};

struct WantedBy {
  const char* operator()(JsonIgnored) const { return "any value"; }
  const char* operator()(std::string*) const { return kText; }
  const char* operator()(JsonNonEmptyText) const { return kText; }
  const char* operator()(bool*) const { return kFlag; }
  const char* operator()(std::int32_t*) const { return kNumber; }
  const char* operator()(std::uint32_t*) const { return kNumber; }
  const char* operator()(JsonRecord) const { return kObject; }
  template <typename List>
  const char* operator()(List) const {
    return kList;
  }
};

std::string wrongKind(const char* wanted, const char* found) {
  return std::string("must be ") + wanted + ", not " + found;
}

std::string wrongKind(const char* wanted, const JsonScalar& found) {
  return wrongKind(wanted, std::visit(KindOf(), found));
}

bool isNumber(const JsonScalar& value) {
  return std::holds_alternative<std::int64_t>(value) ||
         std::holds_alternative<std::uint64_t>(value) || std::holds_alternative<double>(value);
}

template <typename Integer>
std::string wrongNumber(const JsonScalar& value) {
  if (!isNumber(value)) {
    return wrongKind(kNumber, value);
  }
  return "must be a whole number from " + std::to_string(std::numeric_limits<Integer>::min()) +
         " to " + std::to_string(std::numeric_limits<Integer>::max()) + ", not " +
         std::visit([](const auto& number) { return nlohmann::json(number).dump(); }, value);
}

std::string assignText(std::string& text, const JsonScalar& value) {
  const auto* found = std::get_if<std::string_view>(&value);
  if (found == nullptr) {
    return wrongKind(kText, value);
  }
  if (found->find('\0') != std::string_view::npos) {
    return "contains a NUL character";
  }
  text = *found;
  return {};
}

template <typename Integer>
std::string assignNumber(Integer& number, const JsonScalar& value) {
  constexpr std::int64_t kLeast = std::numeric_limits<Integer>::min();
  constexpr std::int64_t kMost = std::numeric_limits<Integer>::max();
  if (const auto* found = std::get_if<std::uint64_t>(&value);
      found != nullptr && *found <= static_cast<std::uint64_t>(kMost)) {
    number = static_cast<Integer>(*found);
    return {};
  }
  if (const auto* found = std::get_if<std::int64_t>(&value);
      found != nullptr && *found >= kLeast && *found <= kMost) {
    number = static_cast<Integer>(*found);
    return {};
  }
  return wrongNumber<Integer>(value);
}

struct Assign {
  const JsonScalar& value;

  std::string operator()(JsonIgnored) const { return {}; }
  std::string operator()(std::string* text) const { return assignText(*text, value); }
  std::string operator()(JsonNonEmptyText target) const {
    std::string refusal = assignText(*target.text, value);
    return refusal.empty() && target.text->empty() ? "must not be empty" : refusal;
  }
  std::string operator()(bool* flag) const {
    const bool* found = std::get_if<bool>(&value);
    if (found == nullptr) {
      return wrongKind(kFlag, value);
    }
    *flag = *found;
    return {};
  }
  std::string operator()(std::int32_t* number) const { return assignNumber(*number, value); }
  std::string operator()(std::uint32_t* number) const { return assignNumber(*number, value); }
  template <typename Container>
  std::string operator()(Container target) const {
    return wrongKind(WantedBy()(target), value);
  }
};

}  // namespace

std::string assign(const JsonTarget& target, const JsonScalar& value) {
  return std::visit(Assign{value}, target);
}

std::string refusalOf(const JsonTarget& target, JsonContainer container) {
  return wrongKind(std::visit(WantedBy(), target),
                   container == JsonContainer::kObject ? kObject : kList);
}

}  // namespace agent
