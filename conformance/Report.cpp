#include "conformance/Report.h"

#include <ostream>
#include <stdexcept>

#include "client/base/Utf8.h"
#include "conformance/shared/ProbeProtocol.h"

namespace conformance {
namespace {

const char* nameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kPass:
      return probe::kPass;
    case Outcome::kFail:
      return probe::kFail;
    case Outcome::kSkip:
      break;
  }
  return probe::kSkip;
}

constexpr std::size_t kLongestText = 2000;

}  // namespace

std::string printable(const std::string& text) {
  if (text.size() <= kLongestText) {
    return topoctl::escapeControls(text);
  }
  return topoctl::escapeControls(text.substr(0, kLongestText / 2)) + "..." +
         topoctl::escapeControls(text.substr(text.size() - kLongestText / 2));
}

std::string format(const Result& result) {
  std::string line = std::string(nameOf(result.outcome)) + "  " + result.rule + "  " + result.text;
  if (!result.reason.empty()) {
    line += " (" + result.reason + ")";
  }
  return printable(line);
}

void Report::add(const Result& result) {
  std::size_t& count = result.outcome == Outcome::kPass   ? passed_
                       : result.outcome == Outcome::kFail ? failed_
                                                          : skipped_;
  ++count;
  rules_.insert(result.rule);
  print(format(result));
}

void Report::finish() {
  print(std::to_string(passed_) + " passed, " + std::to_string(failed_) + " failed, " +
        std::to_string(skipped_) + " skipped");
}

// A reader sees each line at once.
void Report::print(const std::string& line) {
  out_ << line << std::endl;
  if (!out_) {
    throw std::runtime_error("the results cannot be written to the standard output");
  }
}

int Report::exitStatus() const {
  return failed_ == 0 ? kAllPassed : kRuleBroken;
}

}  // namespace conformance
