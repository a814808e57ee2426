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

TopoAgent::ImportSummary_T FakeConsole::importNetwork(const char* fileName,
                                                      const TopoAgent::Content_T& content) {
  const std::string bytes(content.get_buffer(), content.get_buffer() + content.length());
  call(std::string("import(") + fileName + ", " + bytes + ")");
  TopoAgent::ImportSummary_T summary;
  summary.topoNodes = 1;
  summary.networkElements = 2;
  summary.clockPositions = 3;
  summary.clockLinks = 4;
  summary.objectLabels = 4294967295U;
  return summary;
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
  return new TopoAgent::Status_T(makeStatus());
}

void FakeConsole::reloadModule() {
  call("reload");
}

}  // namespace topoctl
