// The console: the agent's operator changes the network and the agent through it.

#ifndef AGENT_CONSOLE_CONSOLESERVANT_H
#define AGENT_CONSOLE_CONSOLESERVANT_H

#include "agent/changes/Backups.h"
#include "agent/changes/NodeService.h"
#include "agent/console/AgentControl.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Every operation ends in an answer or a ProcessingFailureException; what broke within the agent is
// in its log.
//
// Borrows what it works on. Thread-safety: any thread.
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
