// The console: operators change the network and control the agent.

#ifndef AGENT_CONSOLE_CONSOLESERVANT_H
#define AGENT_CONSOLE_CONSOLESERVANT_H

#include "agent/changes/AttributeService.h"
#include "agent/changes/Backups.h"
#include "agent/changes/InventoryService.h"
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
  ConsoleServant(NodeService& nodes, InventoryService& inventory, AttributeService& attributes,
                 Backups& backups, AgentControl& control)
      : nodes_(nodes),
        inventory_(inventory),
        attributes_(attributes),
        backups_(backups),
        control_(control) {}

  void createNode(const TopoAgent::NewNode_T& node) override;
  CORBA::ULong deleteNode(const char* id) override;
  void renameNode(const char* id, const char* name) override;
  void moveNode(const char* id, const char* parent, TopoAgent::NodeKind_T parentKind) override;
  void changeNode(const char* id, const TopoAgent::OptionalNumbers_T& params,
                  const TopoAgent::OptionalPairs_T& attributes) override;
  void createElement(const TopoAgent::Element_T& element) override;
  void renameElement(CORBA::Long number, const char* name) override;
  void setElementShown(CORBA::Long number, CORBA::Boolean isShown) override;
  void deleteElement(CORBA::Long number) override;
  void createClockPosition(const TopoAgent::ClockPosition_T& position) override;
  void changeClockPosition(const char* reference, const TopoAgent::OptionalText_T& label,
                           const TopoAgent::OptionalNumbers_T& values) override;
  void deleteClockPosition(const char* reference) override;
  void createClockLink(const TopoAgent::ClockLink_T& link) override;
  void changeClockLink(const char* id, const TopoAgent::OptionalText_T& name,
                       const TopoAgent::OptionalText_T& aEnd,
                       const TopoAgent::OptionalText_T& zEnd) override;
  void deleteClockLink(const char* id) override;
  void setLabel(CORBA::Long type, const char* id, const char* label) override;
  void deleteLabel(CORBA::Long type, const char* id) override;
  TopoAgent::ObjectDetails_T* getObject(const globaldefs::NVSList_T& name) override;
  TopoAgent::ImportSummary_T importNetwork(const char* fileName,
                                           const TopoAgent::Content_T& content,
                                           const TopoAgent::ImportOptions_T& options) override;
  CORBA::ULongLong beginBackup() override;
  CORBA::ULongLong beginExport() override;
  TopoAgent::BackupPart_T* continueBackup(CORBA::ULongLong backup) override;
  void endBackup(CORBA::ULongLong backup) override;
  void setTestSwitch(CORBA::Boolean on) override;
  TopoAgent::Status_T* getStatus() override;
  void reloadModule() override;

 private:
  NodeService& nodes_;
  InventoryService& inventory_;
  AttributeService& attributes_;
  Backups& backups_;
  AgentControl& control_;
};

}  // namespace agent

#endif
