#include "conformance/ProbeStage.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <utility>

#include "conformance/HostProtocol.h"
#include "conformance/checks/ProbeCalls.h"
#include "conformance/shared/ProbeProtocol.h"

namespace conformance {
namespace {

constexpr const char* kUnfinished = "the process of the host has ended during the check";
constexpr const char* kFiniRule = "unload.fini";
constexpr const char* kFiniText = "the host calls fini before it ends";

bool isFiniRule(const Result& result) {
  return result.rule.compare(0, std::string(probe::kFiniPrefix).size(), probe::kFiniPrefix) == 0;
}

}  // namespace

ProbeStage::ProbeStage(Context& context, Runner& runner, Report& report, const Selection& selection,
                       std::string directory)
    : context_(context),
      runner_(runner),
      report_(report),
      selection_(selection),
      directory_(std::move(directory)) {}

std::vector<std::string> ProbeStage::environment() const {
  std::string skipped;
  for (const std::string& rule : fatalRules_) {
    skipped += rule + ',';
  }
  return {std::string(probe::kReportVariable) + "=" + directory_ + "/report",
          std::string(probe::kSkipVariable) + "=" + skipped,
          std::string(probe::kOnlyVariable) + "=" + selection_.list(),
          std::string(probe::kFailVariable) + "=" + context_.failInitFile};
}

std::vector<Result> ProbeStage::readReport() const {
  std::ifstream file(directory_ + "/report");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  return parseProbeReport(text, kUnfinished);
}

// Returns whether the host runs with the probe. A rule that ends the process in init is reported
// and left out in the next attempt.
bool ProbeStage::start() {
  for (;;) {
    std::ofstream(directory_ + "/report").flush();
    context_.host.setProbeEnvironment(environment());
    std::string failure;
    try {
      context_.host.start(Plugin::kProbe);
      return true;
    } catch (const WrongOperator&) {
      throw;
    } catch (const std::exception& reason) {
      failure = reason.what();
    }
    const auto results = readReport();
    if (results.empty() || results.back().reason != kUnfinished ||
        !fatalRules_.insert(results.back().rule).second) {
      report_.add({Outcome::kFail, kLoadRule, kLoadText, failure});
      return false;
    }
    report_.add({Outcome::kFail, results.back().rule, results.back().text, failure});
  }
}

void ProbeStage::runInitRules() {
  for (const Result& result : readReport()) {
    report_.add(result);
  }
}

void ProbeStage::runRules() {
  Pairs rules;
  runner_.run(kLoadRule, kLoadText, Plugin::kProbe, [&rules](Context& context) {
    rules = callProbe(context, probe::kList);
    require(!rules.empty(), "the manager does not answer as the probe");
  });
  for (const auto& [rule, text] : rules) {
    if (!selection_.has(rule)) {
      continue;
    }
    runner_.run(rule, text, Plugin::kProbe,
                [&id = rule](Context& context) { checkInProbe(context, id); });
  }
}

void ProbeStage::runFiniRules() {
  context_.host.stop();
  std::vector<Result> results = readReport();
  results.erase(std::remove_if(results.begin(), results.end(),
                               [](const Result& result) { return !isFiniRule(result); }),
                results.end());
  if (selection_.has(kFiniRule)) {
    report_.add(results.empty()
                    ? Result{Outcome::kFail, kFiniRule, kFiniText, "fini was not called"}
                    : Result{Outcome::kPass, kFiniRule, kFiniText, ""});
  }
  // fini runs at each reload and at the end of the host. A failure of one run counts.
  std::map<std::string, Result> worst;
  for (const Result& result : results) {
    Result& known = worst.emplace(result.rule, result).first->second;
    known = result.outcome == Outcome::kFail ? result : known;
  }
  for (const auto& entry : worst) {
    report_.add(entry.second);
  }
}

void ProbeStage::run() {
  if (!start()) {
    return;
  }
  runInitRules();
  runRules();
  for (const Check& check : checks()) {
    if (check.plugin == Plugin::kProbe && selection_.has(check.rule)) {
      runner_.run(check);
    }
  }
  runFiniRules();
}

}  // namespace conformance
