// The host that is checked: the host's process, manager and operator.

#ifndef CONFORMANCE_HOST_H
#define CONFORMANCE_HOST_H

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "conformance/HostProcess.h"
#include "conformance/Operator.h"
#include "conformance/Options.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace conformance {

// The host cannot be started, or a running host does not answer. As std::runtime_error.
class StartFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The host is operated through its console, which the command line does not say. Ends the run. As
// std::runtime_error.
class WrongOperator : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class Plugin { kModule, kProbe };

// Starts, restarts and ends the process of a host; for --agent only refers to a running host.
//
// Thread-safety: none. Owns the process; borrows options and server. Errors: StartFailed,
// WrongOperator, CORBA::SystemException.
class Host {
 public:
  // consumer: the reference in place of {consumer} in the command.
  Host(const Options& options, orb::Server& server, std::string consumer);
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Whether this program starts the host.
  bool isOwn() const { return !options_.command.empty(); }

  // Whether notifications reach the consumer without a subscription.
  bool feedsConsumer() const;

  // Makes the host run with this plug-in: does nothing when the host runs so already.
  // REQUIRES: isOwn for the probe.
  void require(Plugin plugin);

  // Restarts the host, with NAME=VALUE entries in its environment.
  void start(Plugin plugin, const std::vector<std::string>& environment = {});

  // Asks the host to end, and kills it after the timeout. Returns whether the process ended with
  // status 0 on request; true without a process. Throws as requireNoConsole after the timeout.
  bool stop();

  // Call after a request on the standard input of the host without an answer. Throws WrongOperator
  // when the host has a console. Only the first call asks the host.
  void requireNoConsole();

  // Ends the process at once.
  void kill();

  // The variables that every start with the probe gets.
  void setProbeEnvironment(std::vector<std::string> environment) {
    probeEnvironment_ = std::move(environment);
  }

  // Whether the process of the host has ended or ends within the time. False without a process.
  bool endsWithin(std::chrono::milliseconds time);
  std::string describeEnd();  // REQUIRES: endsWithin has returned true

  // 0 without a process.
  pid_t pid() const { return process_ ? process_->pid() : 0; }

  // The base name of the plug-in that is loaded.
  std::string pluginFile() const;

  // The number of different files with the plug-in that the process maps. Throws Broken when the
  // map cannot be read. REQUIRES: isOwn.
  std::size_t mappedFiles() const;

  TopoManagementManager::TopoMgr_I_ptr manager() const { return manager_.in(); }
  CORBA::Object_ptr objectBeside(const char* key) const;  // a new reference
  Operator& op() const { return *operator_; }

  // Reload the plug-in; the manager's reference follows.
  void reload();
  void load();

 private:
  const std::string& pathOf(Plugin plugin) const;
  void waitUntilReady();
  void refer(const std::string& reference);
  TopoAgent::Console_I_ptr console() const;  // a new reference; nil when the host has none
  std::unique_ptr<Operator> makeOperator();

  const Options& options_;
  orb::Server& server_;
  const std::string consumer_;
  std::vector<std::string> probeEnvironment_;
  std::unique_ptr<HostProcess> process_;
  Plugin plugin_ = Plugin::kModule;
  TopoManagementManager::TopoMgr_I_var manager_;
  std::unique_ptr<Operator> operator_;
  bool hasAskedForConsole_ = false;
};

}  // namespace conformance

#endif
