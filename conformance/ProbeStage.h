// The part of a run in which the host has loaded the probe module.

#ifndef CONFORMANCE_PROBESTAGE_H
#define CONFORMANCE_PROBESTAGE_H

#include <set>
#include <string>
#include <vector>

#include "conformance/Runner.h"
#include "conformance/Selection.h"

namespace conformance {

constexpr const char* kLoadRule = "probe.load";
constexpr const char* kLoadText = "the host loads and serves another module at the same entry";

// Runs the selected rules of the probe and the selected checks that need the probe.
//
// Thread-safety: none. Borrows its arguments; `directory` is for files of the probe. Errors: none;
// failures are results.
class ProbeStage {
 public:
  ProbeStage(Context& context, Runner& runner, Report& report, const Selection& selection,
             std::string directory);

  void run();

 private:
  bool start();
  void runInitRules();
  void runRules();
  void runFiniRules();
  std::vector<Result> readReport() const;
  std::vector<std::string> environment() const;

  Context& context_;
  Runner& runner_;
  Report& report_;
  const Selection& selection_;
  const std::string directory_;
  std::set<std::string> fatalRules_;  // init rules that have ended the host's process
};

}  // namespace conformance

#endif
