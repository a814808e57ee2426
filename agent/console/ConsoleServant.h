// The console: operators change the network and control the agent.

#ifndef AGENT_CONSOLE_CONSOLESERVANT_H
#define AGENT_CONSOLE_CONSOLESERVANT_H

#include "agent/changes/Backups.h"
#include "agent/changes/NodeService.h"
#include "agent/console/AgentControl.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Forwards each operation to a service or to the agent, and translates failures.
//
// Thread-safety: any thread.
// Ownership: borrows the services and the control, which outlive this servant.
// Errors: every operation throws only ProcessingFailureException; the cause of an internal error is
// logged.
class ConsoleServant final : public POA_TopoAgent::Console_I {
 public:
  ConsoleServant(NodeService& nodes, Backups& backups, AgentControl& control)
      : nodes_(nodes), backups_(backups), control_(control) {}

  void createNode(const TopoAgent::NewNode_T& node) override;
  CORBA::ULong deleteNode(const char* id) override;
  void renameNode(const char* id, const char* name) override;
  TopoAgent::ImportSummary_T importNetwork(const char* fileName,
                                           const TopoAgent::Content_T& content) override;
  CORBA::ULongLong beginBackup() override;
  TopoAgent::BackupPart_T* continueBackup(CORBA::ULongLong backup) override;
  void endBackup(CORBA::ULongLong backup) override;
  void setTestSwitch(CORBA::Boolean on) override;
  TopoAgent::Status_T* getStatus() override;
  void reloadModule() override;

 private:
  NodeService& nodes_;
  Backups& backups_;
  AgentControl& control_;
};

}  // namespace agent

#endif
