#include "client/App.h"

#include <ostream>

#include "client/Commands.h"
#include "client/Connection.h"
#include "client/Failure.h"
#include "client/Progress.h"
#include "client/Session.h"

namespace topoctl {
namespace {

PrintFunction call(const Options& options, CORBA::ORB_ptr orb, const Streams& streams) {
  const auto manager = connect(orb, options);
  Progress progress(streams.err, streams.errIsTerminal);
  const ProgressFunction show = [&progress](std::size_t records) { progress.show(records); };
  return commandNamed(options.command).run({manager.in(), options, show});
}

void finish(std::ostream& out) {
  out << std::flush;
  if (!out) {
    throw Failure(ExitCode::kLocal, "the output cannot be written");
  }
}

void runCommand(const Options& options, const Streams& streams) {
  if (!options.notice.empty()) {
    streams.out << options.notice;
    finish(streams.out);
    return;
  }
  const auto orb = orb::startClient(options.orb);
  execute(options, orb->get(), streams);
}

}  // namespace

void execute(const Options& options, CORBA::ORB_ptr orb, const Streams& streams) {
  const PrintFunction printResult = call(options, orb, streams);
  printResult(streams.out);
  finish(streams.out);
}

int run(const std::vector<std::string>& arguments, const std::string& agentOfEnvironment,
        const Streams& streams) {
  Options options;
  try {
    options = parseOptions(arguments, agentOfEnvironment);
    runCommand(options, streams);
    return static_cast<int>(ExitCode::kDone);
  } catch (...) {
    return report(currentFailure(options), streams.err);
  }
}

}  // namespace topoctl
