#include "conformance/Host.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <utility>

#include "conformance/HostProtocol.h"
#include "conformance/shared/Verdict.h"
#include "idl/ObjectKeys.h"
#include "orb/resolve.h"

namespace conformance {
namespace {

using Milliseconds = std::chrono::milliseconds;

}  // namespace

Host::Host(const Options& options, orb::Server& server, std::string consumer)
    : options_(options), server_(server), consumer_(std::move(consumer)) {}

Host::~Host() = default;

bool Host::feedsConsumer() const {
  return expand(options_.command, kConsumerPlaceholder, "") != options_.command;
}

const std::string& Host::pathOf(Plugin plugin) const {
  return plugin == Plugin::kModule ? options_.module : options_.probe;
}

std::string Host::pluginFile() const {
  const std::string& path = pathOf(plugin_);
  return path.substr(path.rfind('/') + 1);
}

std::size_t Host::mappedFiles() const {
  std::ifstream file("/proc/" + std::to_string(pid()) + "/maps");
  conformance::require(file.is_open(), "the memory map of the host's process cannot be read");
  const std::string maps{std::istreambuf_iterator<char>(file), {}};
  return countMappedFiles(maps, pluginFile());
}

void Host::require(Plugin plugin) {
  if (!isOwn()) {
    if (!operator_) {
      refer(options_.agent);
    }
    return;
  }
  const bool runs = process_ && plugin_ == plugin && !endsWithin(Milliseconds(0));
  if (!runs) {
    start(plugin);
  }
}

void Host::start(Plugin plugin, const std::vector<std::string>& environment) {
  stop();
  plugin_ = plugin;
  std::vector<std::string> variables = environment;
  if (plugin == Plugin::kProbe) {
    variables.insert(variables.end(), probeEnvironment_.begin(), probeEnvironment_.end());
  }
  const auto command = expand(expand(options_.command, kModulePlaceholder, pathOf(plugin)),
                              kConsumerPlaceholder, consumer_);
  process_ = std::make_unique<HostProcess>(command, variables);
  waitUntilReady();
}

void Host::waitUntilReady() {
  const auto deadline = std::chrono::steady_clock::now() + options_.timeout;
  std::string last;
  for (;;) {
    const auto rest =
        std::chrono::duration_cast<Milliseconds>(deadline - std::chrono::steady_clock::now());
    const auto line = process_->readLine(rest);
    if (!line && process_->endsWithin(Milliseconds(500))) {
      throw StartFailed("the host did not become ready: " + process_->describeEnd());
    }
    if (!line) {
      const bool isLate = std::chrono::steady_clock::now() >= deadline;
      process_.reset();
      throw StartFailed("the host " +
                        (isLate
                             ? "printed no line \"ready REFERENCE\" within " +
                                   std::to_string(options_.timeout.count()) + " s"
                             : "closed its standard output before the line \"ready REFERENCE\"") +
                        describeLastLine(last));
    }
    if (const auto reference = referenceInReadyLine(*line)) {
      refer(*reference);
      return;
    }
    last = *line;
  }
}

void Host::refer(const std::string& reference) {
  try {
    const CORBA::Object_var object =
        orb::resolve(server_.get(), reference, Milliseconds(options_.timeout));
    manager_ = TopoManagementManager::TopoMgr_I::_narrow(object.in());
    if (!CORBA::is_nil(manager_.in()) && manager_->_non_existent()) {
      throw StartFailed("the object of the reference does not exist: is the module loaded?");
    }
  } catch (const StartFailed&) {
    throw;
  } catch (const std::runtime_error& failure) {
    throw StartFailed("the reference " + reference + ": " + failure.what());
  } catch (const CORBA::SystemException& failure) {
    throw StartFailed("the manager does not answer: " + orb::describe(failure));
  }
  if (CORBA::is_nil(manager_.in())) {
    throw StartFailed("the reference is not that of a TopoMgr_I");
  }
  operator_ = makeOperator();
}

TopoAgent::Console_I_ptr Host::console() const {
  try {
    const CORBA::Object_var object = objectBeside(object_key::kConsole);
    return TopoAgent::Console_I::_narrow(object.in());
  } catch (const CORBA::SystemException&) {
    return TopoAgent::Console_I::_nil();
  }
}

std::unique_ptr<Operator> Host::makeOperator() {
  if (process_ && !options_.usesConsole) {
    return pipeOperator(*process_, Milliseconds(options_.timeout));
  }
  const TopoAgent::Console_I_var found = console();
  if (!CORBA::is_nil(found.in())) {
    return consoleOperator(found.in());
  }
  if (process_) {
    throw StartFailed("the host has no console: leave out --console");
  }
  return noOperator();
}

void Host::requireNoConsole() {
  if (options_.usesConsole || hasAskedForConsole_ || CORBA::is_nil(manager_.in())) {
    return;
  }
  hasAskedForConsole_ = true;
  const TopoAgent::Console_I_var found = console();
  if (!CORBA::is_nil(found.in())) {
    throw WrongOperator(
        "the host does not answer on its standard output, but it has a console: use --console");
  }
}

CORBA::Object_ptr Host::objectBeside(const char* key) const {
  CORBA::Object_var object = orb::objectBeside(server_.get(), manager_.in(), key);
  orb::setCallTimeout(object.in(), Milliseconds(options_.timeout));
  return object._retn();
}

void Host::reload() {
  if (const std::string reference = op().reload(); !reference.empty()) {
    refer(reference);
  }
}

void Host::load() {
  if (const std::string reference = op().load(); !reference.empty()) {
    refer(reference);
  }
}

bool Host::endsWithin(Milliseconds time) {
  return process_ && process_->endsWithin(time);
}

std::string Host::describeEnd() {
  return process_->describeEnd();
}

bool Host::stop() {
  if (!process_) {
    return true;
  }
  if (options_.usesConsole) {
    process_->send(SIGTERM);
  } else {
    process_->writeLine("quit", Milliseconds(options_.timeout));
    process_->closeInput();
  }
  const bool isOver = process_->endsWithin(Milliseconds(options_.timeout));
  if (!isOver) {
    requireNoConsole();
  }
  const bool isWell = isOver && process_->endedWell();
  kill();
  return isWell;
}

void Host::kill() {
  operator_.reset();  // borrows the process
  process_.reset();
}

}  // namespace conformance
