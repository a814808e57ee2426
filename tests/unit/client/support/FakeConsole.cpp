#include "tests/unit/client/support/FakeConsole.h"

#include <algorithm>
#include <string>
#include <vector>

namespace topoctl {
namespace {

std::string kindOf(TopoAgent::NodeKind_T kind) {
  if (kind == TopoAgent::NK_OF_PARENT) {
    return "kind-of";
  }
  return kind == TopoAgent::NK_ELEMENT ? "element" : "subnetwork";
}

std::string format(const TopoAgent::Numbers_T& numbers) {
  return std::to_string(numbers.first) + " " + std::to_string(numbers.second);
}

// "-" for a field that was not sent.
std::string format(const TopoAgent::OptionalNumbers_T& field) {
  return field.length() == 0 ? "-" : format(field[0]);
}

std::string format(const TopoAgent::OptionalText_T& field) {
  return field.length() == 0 ? "-" : std::string(field[0].in());
}

}  // namespace

TopoAgent::Status_T makeStatus() {
  TopoAgent::Status_T status;
  status.agentVersion = "1.2";
  status.moduleVersion = "3.4";
  status.uptimeSeconds = 15;
  status.store = "a.db";
  status.emsName = "E";
  status.moduleState = TopoAgent::MS_RELOADING;
  status.lastReloadError = "no file";
  status.eventAccess = TopoAgent::EA_DENIED;
  status.viewNodes = 16;
  status.moduleLoads = 1;
  status.testSwitch = true;
  status.topoNodes = 2;
  status.iterators = 3;
  status.subscriptions = 4;
  status.eventsQueued = 5;
  status.eventsDropped = 18446744073709551615ULL;
  status.notifications = 7;
  status.subscribersDropped = 8;
  status.auditLost = 9;
  status.auditFailure = "No space left on device";
  status.receivers.length(2);
  status.receivers[0].receiver = "127.0.0.1:4711";
  status.receivers[0].isChannel = false;
  status.receivers[0].isConnected = true;
  status.receivers[0].queued = 9;
  status.receivers[0].sent = 10;
  status.receivers[0].lost = 11;
  status.receivers[1].receiver = "channel \x1b[31m";
  status.receivers[1].isChannel = true;
  status.receivers[1].isConnected = false;
  status.receivers[1].queued = 12;
  status.receivers[1].sent = 13;
  status.receivers[1].lost = 14;
  return status;
}

void FakeConsole::call(const std::string& text) {
  script_.record(text);
  script_.onConsole();
}

void FakeConsole::createNode(const TopoAgent::NewNode_T& node) {
  std::string text = std::string("create(") + node.id.in() + ", " + kindOf(node.parentKind) + " " +
                     node.parent.in() + ", " + node.name.in() + ", " + kindOf(node.kind) + ", " +
                     std::to_string(node.nodeParam1) + ", " + std::to_string(node.nodeParam2);
  for (CORBA::ULong i = 0; i < node.attributes.length(); ++i) {
    text += std::string(", ") + node.attributes[i].name.in() + "=" + node.attributes[i].value.in();
  }
  call(text + ")");
}

CORBA::ULong FakeConsole::deleteNode(const char* id) {
  call(std::string("delete(") + id + ")");
  return 3;
}

void FakeConsole::renameNode(const char* id, const char* name) {
  call(std::string("rename(") + id + ", " + name + ")");
}

void FakeConsole::moveNode(const char* id, const char* parent, TopoAgent::NodeKind_T parentKind) {
  call(std::string("move(") + id + ", " + kindOf(parentKind) + " " + parent + ")");
}

void FakeConsole::changeNode(const char* id, const TopoAgent::OptionalNumbers_T& params,
                             const TopoAgent::OptionalPairs_T& attributes) {
  std::string text = std::string("change-node(") + id + ", " + format(params) + ", ";
  if (attributes.length() == 0) {
    text += "-";
  } else {
    for (CORBA::ULong i = 0; i < attributes[0].length(); ++i) {
      text +=
          std::string("[") + attributes[0][i].name.in() + "=" + attributes[0][i].value.in() + "]";
    }
  }
  call(text + ")");
}

void FakeConsole::createElement(const TopoAgent::Element_T& element) {
  call("create-element(" + std::to_string(element.number) + ", " + element.name.in() + ", " +
       (element.isShown ? "shown" : "not shown") + ")");
}

void FakeConsole::renameElement(CORBA::Long number, const char* name) {
  call("rename-element(" + std::to_string(number) + ", " + name + ")");
}

void FakeConsole::setElementShown(CORBA::Long number, CORBA::Boolean isShown) {
  call((isShown ? "show-element(" : "hide-element(") + std::to_string(number) + ")");
}

void FakeConsole::deleteElement(CORBA::Long number) {
  call("delete-element(" + std::to_string(number) + ")");
}

void FakeConsole::createClockPosition(const TopoAgent::ClockPosition_T& position) {
  call(std::string("create-position(") + position.reference.in() + ", " + position.label.in() +
       ", " + format(position.values) + ")");
}

void FakeConsole::changeClockPosition(const char* reference, const TopoAgent::OptionalText_T& label,
                                      const TopoAgent::OptionalNumbers_T& values) {
  call(std::string("change-position(") + reference + ", " + format(label) + ", " + format(values) +
       ")");
}

void FakeConsole::deleteClockPosition(const char* reference) {
  call(std::string("delete-position(") + reference + ")");
}

void FakeConsole::createClockLink(const TopoAgent::ClockLink_T& link) {
  call(std::string("create-link(") + link.id.in() + ", " + link.name.in() + ", " + link.aEnd.in() +
       ", " + link.zEnd.in() + ")");
}

void FakeConsole::changeClockLink(const char* id, const TopoAgent::OptionalText_T& name,
                                  const TopoAgent::OptionalText_T& aEnd,
                                  const TopoAgent::OptionalText_T& zEnd) {
  call(std::string("change-link(") + id + ", " + format(name) + ", " + format(aEnd) + ", " +
       format(zEnd) + ")");
}

void FakeConsole::deleteClockLink(const char* id) {
  call(std::string("delete-link(") + id + ")");
}

void FakeConsole::setLabel(CORBA::Long type, const char* id, const char* label) {
  call("set-label(" + std::to_string(type) + ", " + id + ", " + label + ")");
}

void FakeConsole::deleteLabel(CORBA::Long type, const char* id) {
  call("delete-label(" + std::to_string(type) + ", " + id + ")");
}

TopoAgent::ImportSummary_T FakeConsole::importNetwork(const char* fileName,
                                                      const TopoAgent::Content_T& content,
                                                      const TopoAgent::ImportOptions_T& options) {
  const std::string bytes(content.get_buffer(), content.get_buffer() + content.length());
  call(std::string("import(") + fileName + ", " + bytes + (options.replace ? ", replace" : "") +
       (options.dryRun ? ", dry-run" : "") +
       (options.firstElement == 0 ? "" : ", from " + std::to_string(options.firstElement)) + ")");
  TopoAgent::ImportSummary_T summary;
  summary.topoNodes = 1;
  summary.networkElements = 2;
  summary.clockPositions = 3;
  summary.clockLinks = 4;
  summary.objectLabels = 4294967295U;
  return summary;
}

TopoAgent::ObjectDetails_T* FakeConsole::getObject(const globaldefs::NVSList_T& name) {
  std::string text = "get(";
  for (CORBA::ULong i = 0; i < name.length(); ++i) {
    text += std::string(i == 0 ? "" : ", ") + name[i].name.in() + "=" + name[i].value.in();
  }
  call(text + ")");
  TopoAgent::ObjectDetails_T_var details = new TopoAgent::ObjectDetails_T;
  details->name = name;
  details->userLabel = "label";
  details->owner = "owner";
  details->additionalInfo.length(1);
  details->additionalInfo[0].name = "Region";
  details->additionalInfo[0].value = "north";
  details->records.length(1);
  details->records[0].list = "topoNodes";
  details->records[0].fields.length(1);
  details->records[0].fields[0].name = "id";
  details->records[0].fields[0].value = "NE=5";
  details->records[0].attributes.length(1);
  details->records[0].attributes[0].name = "location";
  details->records[0].attributes[0].value = "Hall";
  details->records.length(2);
  details->records[1].list = "topoNodes";
  details->records[1].fields.length(1);
  details->records[1].fields[0].name = "id";
  details->records[1].fields[0].value = "5";
  return details._retn();
}

CORBA::ULongLong FakeConsole::beginExport() {
  call("begin-export()");
  backupParts_ = 0;
  return 4712;
}

CORBA::ULongLong FakeConsole::beginBackup() {
  call("begin-backup()");
  backupParts_ = 0;
  return 4711;
}

// Delivers an empty part, then "one ", then "two" as the last part.
TopoAgent::BackupPart_T* FakeConsole::continueBackup(CORBA::ULongLong backup) {
  call("continue-backup(" + std::to_string(backup) + ")");
  const std::string content =
      std::vector<std::string>{"", "one ", "two"}.at(static_cast<std::size_t>(backupParts_));
  TopoAgent::BackupPart_T_var part = new TopoAgent::BackupPart_T;
  part->size = 7;
  part->content.length(static_cast<CORBA::ULong>(content.size()));
  std::copy(content.begin(), content.end(), part->content.get_buffer());
  part->isLast = ++backupParts_ == 3;
  return part._retn();
}

void FakeConsole::endBackup(CORBA::ULongLong backup) {
  call("end-backup(" + std::to_string(backup) + ")");
}

void FakeConsole::setTestSwitch(CORBA::Boolean on) {
  call(on ? "test-switch(on)" : "test-switch(off)");
}

TopoAgent::Status_T* FakeConsole::getStatus() {
  call("status");
  TopoAgent::Status_T_var status = new TopoAgent::Status_T(makeStatus());
  if (!script_.hasModule) {
    status->moduleState = TopoAgent::MS_MISSING;
    status->lastReloadError = "module x.so: cannot be read";
  }
  return status._retn();
}

void FakeConsole::reloadModule() {
  call("reload");
}

}  // namespace topoctl
