// The output of a run: one line for each check, a line with the counts, and the exit status.

#ifndef CONFORMANCE_REPORT_H
#define CONFORMANCE_REPORT_H

#include <cstddef>
#include <iosfwd>
#include <set>
#include <string>

#include "conformance/shared/Verdict.h"

namespace conformance {

// Exit statuses of the program.
constexpr int kAllPassed = 0;
constexpr int kRuleBroken = 1;
constexpr int kNotRun = 2;  // usage, or the host cannot be started

// The text on one line without control characters. The middle of a long text is left out.
std::string printable(const std::string& text);

// "pass  RULE  TEXT"; for FAIL and skip followed by " (REASON)". One printable
// line.
std::string format(const Result& result);

// Prints results as they arrive.
//
// Thread-safety: none. Borrows the stream. Errors: std::runtime_error when the stream takes no
// more.
class Report {
 public:
  explicit Report(std::ostream& out) : out_(out) {}

  void add(const Result& result);

  // Prints a line of its own.
  void note(const std::string& text) { print(text); }

  // Prints the line with the counts.
  void finish();

  // kRuleBroken after a failure, otherwise kAllPassed.
  int exitStatus() const;

  // The rules with a result.
  const std::set<std::string>& rules() const { return rules_; }

 private:
  void print(const std::string& line);

  std::ostream& out_;
  std::set<std::string> rules_;
  std::size_t passed_ = 0;
  std::size_t failed_ = 0;
  std::size_t skipped_ = 0;
};

}  // namespace conformance

#endif
