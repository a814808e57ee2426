// Runs checks and turns their exceptions into results.

#ifndef CONFORMANCE_RUNNER_H
#define CONFORMANCE_RUNNER_H

#include <functional>
#include <string>

#include "conformance/Check.h"
#include "conformance/Report.h"

namespace conformance {

// Thread-safety: none. Borrows context and report. Errors: none; failures of a check are results.
class Runner {
 public:
  Runner(Context& context, Report& report) : context_(context), report_(report) {}

  // Starts the host when it does not run with the plug-in, runs the check and reports the result. A
  // check that ends the host's process or gets no answer has failed, and the next check restarts
  // the host. Returns the result.
  Result run(const std::string& rule, const std::string& text, Plugin plugin,
             const std::function<void(Context&)>& check);

  void run(const Check& check) { run(check.rule, check.text, check.plugin, check.run); }

 private:
  void start(Plugin plugin);
  // Returns whether a call of the check has failed, as calls of a dying host do.
  bool conclude(Result& result, const std::function<void(Context&)>& check, Plugin plugin);
  void explainEnd(Result& result, bool hasFailedCall);

  Context& context_;
  Report& report_;
  bool startFailed_[2] = {false, false};  // for each plug-in
};

}  // namespace conformance

#endif
