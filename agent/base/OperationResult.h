// Results of operations that may fail: Outcome for an operation without a value, Result for one
// with a value. Operations return them and never throw them.

#ifndef AGENT_BASE_OPERATIONRESULT_H
#define AGENT_BASE_OPERATIONRESULT_H

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

#include "agent/base/FailureCodes.h"

namespace agent {

// A FailureCode and, for every code but kSuccess, the reason in one short line. The reason of
// kInternalError is for the log, every other reason is for the client.
//
// Thread-safety: a plain value.
struct Outcome {
  std::uint32_t code = kSuccess;
  std::string reason;

  bool ok() const { return code == kSuccess; }
};

// The value of an operation, or the Outcome of its failure. Both convert to a Result, so that a
// function returns either of them.
//
// Thread-safety: a plain value.
template <typename Value>
class [[nodiscard]] Result {
 public:
  Result(Value value) : content_(std::in_place_index<0>, std::move(value)) {}

  // REQUIRES: !failure.ok().
  Result(Outcome failure) : content_(std::in_place_index<1>, std::move(failure)) {}

  bool ok() const { return content_.index() == 0; }

  // REQUIRES: ok().
  Value& value() { return *std::get_if<0>(&content_); }
  const Value& value() const { return *std::get_if<0>(&content_); }

  // kSuccess after a success.
  Outcome outcome() const { return ok() ? Outcome() : *std::get_if<1>(&content_); }

 private:
  std::variant<Value, Outcome> content_;
};

// kInternalError with the reason "SUBJECT: REASON". The subject is a function that returns a text.
// Without memory for the reason, the reason is empty.
template <typename Subject>
Outcome internalError(Subject subject, const char* reason) noexcept {
  try {
    return {kInternalError, subject() + ": " + reason};
  } catch (...) {
    return {kInternalError, {}};
  }
}

// Prepares an outcome for a client. The reason of kInternalError is logged as "OPERATION: REASON"
// and then removed. Every other outcome is returned as it is, and nothing is logged.
Outcome logInternalError(const char* operation, Outcome outcome);

}  // namespace agent

#endif
