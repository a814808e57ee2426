// How topo-conformance changes the network of a host and reloads its module.

#ifndef CONFORMANCE_OPERATOR_H
#define CONFORMANCE_OPERATOR_H

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

#include "conformance/HostProcess.h"
#include "orb/idl/TopoAgent.h"

namespace conformance {

// The host has refused or not answered a request; what() says which and why. As std::runtime_error.
class OperationFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The host has not read or not answered a request within the timeout. A late answer would be taken
// for the answer to the next request, so the host cannot be operated any more. As OperationFailed.
class NoAnswer : public OperationFailed {
 public:
  using OperationFailed::OperationFailed;
};

// Operates a host. Thread-safety: none. Ownership: borrows the host. Errors: OperationFailed;
// Skipped for an operation that this kind of host does not have.
class Operator {
 public:
  virtual ~Operator() = default;
  Operator(const Operator&) = delete;
  Operator& operator=(const Operator&) = delete;

  // A topology subnetwork without a parent: each call raises one event.
  virtual void create(const std::string& id) = 0;
  virtual void change(const std::string& id) = 0;  // renames the node
  virtual void remove(const std::string& id) = 0;

  virtual void unload() = 0;
  // Returns the new reference of the manager; "" when the old reference is valid.
  virtual std::string load() = 0;
  virtual std::string reload() = 0;  // unload and load

 protected:
  Operator() = default;
};

// Speaks the host protocol through the host's standard input and output. Borrows the process.
std::unique_ptr<Operator> pipeOperator(HostProcess& process, std::chrono::milliseconds timeout);

// Calls the console of topo-agentd.
std::unique_ptr<Operator> consoleOperator(TopoAgent::Console_I_ptr console);

// Throws Skipped for every operation.
std::unique_ptr<Operator> noOperator();

}  // namespace conformance

#endif
