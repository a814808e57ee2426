// The outcome of a check, and the exceptions that end a check early.

#ifndef CONFORMANCE_SHARED_VERDICT_H
#define CONFORMANCE_SHARED_VERDICT_H

#include <stdexcept>
#include <string>

namespace conformance {

enum class Outcome { kPass, kFail, kSkip };

// The host breaks the rule; what() says how. As std::runtime_error.
class Broken : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The rule cannot be checked; what() says why. As std::runtime_error.
class Skipped : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws Broken unless the condition is true.
inline void require(bool condition, const std::string& otherwise) {
  if (!condition) {
    throw Broken(otherwise);
  }
}

// The result of the check of one rule.
struct Result {
  Outcome outcome = Outcome::kPass;
  std::string rule;    // the id, such as "failures.throw"
  std::string text;    // the rule as a sentence
  std::string reason;  // "" for a pass
};

}  // namespace conformance

#endif
