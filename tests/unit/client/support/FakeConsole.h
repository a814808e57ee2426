// An agent's console that records its calls.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_FAKECONSOLE_H
#define TESTS_UNIT_CLIENT_SUPPORT_FAKECONSOLE_H

#include "orb/idl/TopoAgent.h"
#include "tests/unit/client/support/FakeAgent.h"

namespace topoctl {

// A status with a different number in every field and two receivers.
TopoAgent::Status_T makeStatus();

class FakeConsole final : public virtual POA_TopoAgent::Console_I {
 public:
  // Borrows the script.
  explicit FakeConsole(Script& script) : script_(script) {}

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
  TopoAgent::ImportSummary_T importNetwork(const char* fileName,
                                           const TopoAgent::Content_T& content,
                                           const TopoAgent::ImportOptions_T& options) override;
  TopoAgent::ObjectDetails_T* getObject(const globaldefs::NVSList_T& name) override;
  CORBA::ULongLong beginBackup() override;
  CORBA::ULongLong beginExport() override;
  TopoAgent::BackupPart_T* continueBackup(CORBA::ULongLong backup) override;
  void endBackup(CORBA::ULongLong backup) override;
  void setTestSwitch(CORBA::Boolean on) override;
  TopoAgent::Status_T* getStatus() override;
  void reloadModule() override;

 private:
  void call(const std::string& text);

  Script& script_;
  int backupParts_ = 0;
};

}  // namespace topoctl

#endif
