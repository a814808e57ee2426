#include "conformance/Run.h"

#include <stdlib.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <system_error>

#include "client/base/StopSignals.h"
#include "conformance/Descendants.h"
#include "conformance/ProbeStage.h"
#include "conformance/Receiver.h"
#include "conformance/Report.h"
#include "conformance/Runner.h"
#include "conformance/Selection.h"

namespace conformance {
namespace {

// A new directory for files that the probe reads and writes. The destructor removes the directory.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string path =
        (std::filesystem::temp_directory_path() / "topo-conformance-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), "no temporary directory");
    }
    path_ = path;
  }
  ~TemporaryDirectory() { remove(); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }

  void remove() const {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

 private:
  std::string path_;
};

void requireFile(const std::string& option, const std::string& path) {
  std::error_code status;
  if (!std::filesystem::is_regular_file(path, status)) {
    throw std::runtime_error(option + ' ' + path + ": no such file");
  }
}

// Called on the thread of the stop signals while the main thread runs a check.
[[noreturn]] void stop(const TemporaryDirectory& directory, std::ostream& err) {
  err << "topo-conformance: stopped by a signal" << std::endl;
  Descendants::kill();
  directory.remove();
  std::_Exit(kNotRun);
}

void runChecks(Context& context, Report& report, const Selection& selection,
               const std::string& directory) {
  Runner runner(context, report);
  for (const Check& check : checks()) {
    if (check.plugin == Plugin::kModule && selection.has(check.rule)) {
      runner.run(check);
    }
  }
  if (!selection.needsProbe()) {
    return;
  }
  if (context.host.isOwn()) {
    ProbeStage(context, runner, report, selection, directory).run();
  } else {
    report.add(
        {Outcome::kSkip, kLoadRule, kLoadText, "only for a host that topo-conformance starts"});
  }
}

// Throws when no rule is broken and a selected rule was not checked. After a broken rule, such as
// probe.load, the output already gives the reason.
void requireResults(const Report& report, const Selection& selection) {
  const auto missing = selection.missing(report.rules());
  if (!missing.empty() && report.exitStatus() == kAllPassed) {
    throw std::runtime_error(
        "the rule " + missing.front() +
        " was not checked: the name is unknown, or the rule is not for this host");
  }
}

}  // namespace

int run(const Options& options, std::ostream& out, std::ostream& err) {
  try {
    if (options.agent.empty()) {
      requireFile("--module", options.module);
      requireFile("--probe", options.probe);
    }
    const TemporaryDirectory directory;
    const topoctl::StopSignals signals([&directory, &err] { stop(directory, err); });
    const Descendants descendants;
    orb::Options orbOptions;
    orbOptions.callTimeout = options.timeout;
    const auto server = orb::startServer(orbOptions, {"127.0.0.1", 0}, nullptr);
    const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
    manager->activate();
    Receiver receiver(*server);
    const CORBA::String_var consumer = server->get()->object_to_string(receiver.reference());
    Host host(options, *server, consumer.in());
    Context context = {host,  receiver, *server, options.timeout, directory.path() + "/fail-init",
                       false, false};
    host.require(Plugin::kModule);
    Report report(out);
    const Selection selection(options.rules);
    runChecks(context, report, selection, directory.path());
    if (context.lacksConsumer && host.isOwn()) {
      report.note("notifications were not checked: add {consumer} to the arguments of the host");
    }
    report.finish();
    requireResults(report, selection);
    return report.exitStatus();
  } catch (const CORBA::Exception& failure) {
    err << "topo-conformance: the ORB fails: " << failure._name() << std::endl;
  } catch (const std::exception& failure) {
    err << "topo-conformance: " << printable(failure.what()) << std::endl;
  }
  return kNotRun;
}

}  // namespace conformance
