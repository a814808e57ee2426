// Results of operations that may fail: Outcome for an operation without a value, Result for an
// operation with a value. Results are returned and never thrown.

#ifndef AGENT_BASE_OPERATIONRESULT_H
#define AGENT_BASE_OPERATIONRESULT_H

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

#include "agent/base/FailureCodes.h"

namespace agent {

// A FailureCode and, after a failure, the reason in one short line. The reason of kInternalError is
// for the log, every other reason is for the client. A plain value.
struct [[nodiscard]] Outcome {
  std::uint32_t code = kSuccess;
  std::string reason;

  bool ok() const { return code == kSuccess; }
};

// The value of an operation, or the Outcome of its failure. Both convert to a Result, so that a
// function returns either of the two. A plain value.
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

// kInternalError with the reason "SUBJECT: REASON", where subject() returns SUBJECT. The reason is
// empty when memory is short.
template <typename Subject>
Outcome internalError(Subject subject, const char* reason) noexcept {
  try {
    return {kInternalError, subject() + ": " + reason};
  } catch (...) {
    return {kInternalError, {}};
  }
}

// Prepares an outcome for a client: logs the reason of kInternalError as "OPERATION: REASON" and
// removes the reason. Returns every other outcome unchanged.
Outcome logInternalError(const char* operation, Outcome outcome);

}  // namespace agent

#endif
