#include "client/App.h"

#include <ostream>

#include "client/Complete.h"
#include "client/agent/CallFailure.h"
#include "client/agent/Connection.h"
#include "client/commands/Commands.h"
#include "client/output/OutputStream.h"
#include "client/output/Progress.h"

namespace topoctl {
namespace {

PrintFunction call(const Options& options, CORBA::ORB_ptr orb, const Streams& streams,
                   const RetryPolicy& retry) {
  Progress progress(streams.err, streams.errIsTerminal);
  const ProgressFunction update = [&progress](std::size_t records) { progress.update(records); };
  return commandNamed(options.command).call({orb, options, update, retry});
}

void runCommand(const Options& options, const Streams& streams) {
  if (!options.notice.empty()) {
    streams.out << options.notice;
    flush(streams.out);
    return;
  }
  if (const StreamFunction stream = commandNamed(options.command).stream; stream != nullptr) {
    stream(options, streams.out);
    return;
  }
  const auto orb = orb::startClient(orbOptions(options.access));
  execute(options, orb->get(), streams, RetryPolicy());
}

}  // namespace

void execute(const Options& options, CORBA::ORB_ptr orb, const Streams& streams,
             const RetryPolicy& retry) {
  const PrintFunction printResult = call(options, orb, streams, retry);
  printResult(streams.out);
  flush(streams.out);
}

int run(const std::vector<std::string>& arguments, const std::string& agentOfEnvironment,
        const Streams& streams) {
  if (isCompletion(arguments)) {
    complete(arguments, agentOfEnvironment, streams.out);
    return static_cast<int>(ExitCode::kDone);
  }
  Options options;
  try {
    options = parseOptions(arguments, agentOfEnvironment);
    options.table.width = options.wide ? 0 : streams.outColumns;
    runCommand(options, streams);
    return static_cast<int>(ExitCode::kDone);
  } catch (...) {
    return report(currentFailure(options.access), streams.err);
  }
}

}  // namespace topoctl
