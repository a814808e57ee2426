#include "agent/formats/JsonValueReader.h"

#include <utility>

#include "agent/base/PrintableText.h"
#include "agent/formats/ParseError.h"

namespace agent {
namespace {

// Deeper than any field of the format.
constexpr std::size_t kMostNesting = 8;

std::string inBrackets(std::size_t index) {
  return '[' + std::to_string(index) + ']';
}

}  // namespace

void JsonValueReader::start(std::string_view field, const JsonTarget& target) {
  field_ = field;
  index_.reset();
  root_ = target;
  fields_ = nullptr;
  unknown_.clear();
  failure_.reset();
}

void JsonValueReader::startEntry(std::string_view list, std::size_t index) {
  start(list, JsonRecord());
  index_ = index;
}

void JsonValueReader::openRecord(const std::vector<JsonFieldRule>& fields,
                                 const JsonTargets& targets) {
  fields_ = &fields;
  targets_ = targets;
  seen_ = 0;
  frames_.push_back({FrameKind::kRecord, fields.size() - 1});
}

void JsonValueReader::scalar(const JsonScalar& value) {
  if (!isPreceded()) {
    if (const std::string refusal = assign(target(), value); !refusal.empty()) {
      note(refusal);
    }
  }
  finishValue();
}

void JsonValueReader::open(JsonContainer container) {
  if (frames_.size() == kMostNesting) {
    fail("is nested too deeply");
  }
  frames_.push_back({enter(target(), container), 0});
}

void JsonValueReader::key(const std::string& name) {
  if (frames_.back().kind == FrameKind::kRecord) {
    selectField(name);
  } else if (!ignoredNames_.back().insert(name).second) {
    failTwice(name);
  }
}

void JsonValueReader::close() {
  const Frame closed = frames_.back();
  frames_.pop_back();
  if (closed.kind == FrameKind::kPair) {
    closePair(closed.position);
  } else if (closed.kind == FrameKind::kIgnoredObject) {
    ignoredNames_.pop_back();
  }
  finishValue();
}

void JsonValueReader::check() const {
  if (fields_ != nullptr) {
    checkFields();
  }
  if (failure_) {
    throw ParseError(place() + failure_->path, failure_->reason);
  }
}

// Throws for an unknown field, and for a missing field that precedes the failed field.
void JsonValueReader::checkFields() const {
  if (!unknown_.empty()) {
    fail("has the unknown field " + inQuotes(*unknown_.begin()));
  }
  const std::size_t checked = failure_ ? failure_->field : fields_->size();
  for (std::size_t i = 0; i < checked; ++i) {
    const JsonFieldRule& rule = (*fields_)[i];
    if (rule.isRequired && (seen_ >> i & 1) == 0) {
      throw ParseError(place() + '.' + std::string(rule.name), "is missing");
    }
  }
}

void JsonValueReader::fail(const std::string& reason) const {
  throw ParseError(place(), reason);
}

void JsonValueReader::failTwice(const std::string& name) const {
  fail("has the field " + inQuotes(name) + " twice");
}

std::string JsonValueReader::place() const {
  return std::string(field_) + (index_ ? inBrackets(*index_) : "");
}

// REQUIRES: no ignored container is open.
std::string JsonValueReader::path() const {
  std::string path;
  for (const Frame& frame : frames_) {
    path += frame.kind == FrameKind::kRecord ? '.' + std::string((*fields_)[frame.position].name)
                                             : inBrackets(frame.position);
  }
  return path;
}

// Most files have the fields of a record in the order of the rules, so the search begins after the
// previous field, and continues with the first field after the last field.
void JsonValueReader::selectField(const std::string& name) {
  std::size_t& position = frames_.back().position;
  const std::size_t count = fields_->size();
  for (std::size_t step = 1; step <= count; ++step) {
    const std::size_t candidate = (position + step) % count;
    if ((*fields_)[candidate].name == name) {
      position = candidate;
      const std::uint32_t bit = std::uint32_t{1} << candidate;
      if ((seen_ & bit) != 0) {
        failTwice(name);
      }
      seen_ |= bit;
      return;
    }
  }
  position = count;
  if (!unknown_.insert(name).second) {
    failTwice(name);
  }
}

// The target of the next value.
JsonTarget JsonValueReader::target() const {
  if (frames_.empty()) {
    return root_;
  }
  const Frame& innermost = frames_.back();
  switch (innermost.kind) {
    case FrameKind::kRecord:
      return innermost.position < fields_->size() ? targets_[innermost.position] : JsonIgnored();
    case FrameKind::kPair:
      return innermost.position < pair_.size() ? pair_[innermost.position] : JsonIgnored();
    case FrameKind::kPairs:
      return JsonTextPair();
    case FrameKind::kIgnoredObject:
    case FrameKind::kIgnoredList:
      break;
  }
  return JsonIgnored();
}

JsonValueReader::FrameKind JsonValueReader::enter(const JsonTarget& target,
                                                  JsonContainer container) {
  if (std::holds_alternative<JsonIgnored>(target)) {
    return ignore(container);
  }
  if (container == JsonContainer::kList) {
    if (const auto* numbers = std::get_if<JsonNumberPair>(&target)) {
      return enterPair(numbers->first, numbers->second);
    }
    if (std::holds_alternative<JsonTextPair>(target)) {
      return enterPair(&texts_[0], &texts_[1]);
    }
    if (const auto* pairs = std::get_if<JsonTextPairs*>(&target)) {
      pairs_ = *pairs;
      return FrameKind::kPairs;
    }
  }
  note(refusalOf(target, container));
  return ignore(container);
}

JsonValueReader::FrameKind JsonValueReader::ignore(JsonContainer container) {
  if (container == JsonContainer::kList) {
    return FrameKind::kIgnoredList;
  }
  ignoredNames_.emplace_back();
  return FrameKind::kIgnoredObject;
}

JsonValueReader::FrameKind JsonValueReader::enterPair(const JsonTarget& first,
                                                      const JsonTarget& second) {
  pair_ = {first, second};
  pairFailure_.reset();
  return FrameKind::kPair;
}

void JsonValueReader::closePair(std::size_t entries) {
  if (isPreceded()) {
    return;
  }
  if (entries != pair_.size()) {
    note("must have " + std::to_string(pair_.size()) + " entries, not " + std::to_string(entries));
  } else if (pairFailure_) {
    failure_ = std::move(pairFailure_);
  } else if (frames_.back().kind == FrameKind::kPairs) {
    pairs_->emplace_back(std::move(texts_[0]), std::move(texts_[1]));
  }
}

void JsonValueReader::finishValue() {
  if (!frames_.empty() && frames_.back().kind != FrameKind::kRecord) {
    ++frames_.back().position;
  }
}

// The field of the record that the current value belongs to.
std::size_t JsonValueReader::currentField() const {
  return fields_ == nullptr || frames_.empty() ? 0 : frames_.front().position;
}

// Whether a failure is known that precedes all failures of the current value. Then the value needs
// no check, so a long list of wrong values takes no longer than a list of ignored values.
bool JsonValueReader::isPreceded() const {
  return failure_ && failure_->field <= currentField();
}

// Whether the open kPair is an entry of a kPairs.
bool JsonValueReader::isInPairs() const {
  return frames_[frames_.size() - 2].kind == FrameKind::kPairs;
}

// Keeps a failure of the current value, unless another failure precedes. If both values of a pair
// fail, the first number of two numbers is reported, and the second text of two texts.
void JsonValueReader::note(const std::string& reason) {
  if (isPreceded()) {
    return;
  }
  Failure failure{currentField(), path(), reason};
  if (frames_.empty() || frames_.back().kind != FrameKind::kPair) {
    failure_ = std::move(failure);
  } else if (!pairFailure_ || isInPairs()) {
    pairFailure_ = std::move(failure);
  }
}

}  // namespace agent
