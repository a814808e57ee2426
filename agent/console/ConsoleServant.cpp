#include "agent/console/ConsoleServant.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/OperationResult.h"
#include "agent/base/PrintableText.h"
#include "agent/console/ConsoleOperation.h"
#include "agent/console/NodeRecords.h"
#include "agent/console/ObjectDetails.h"
#include "agent/formats/JsonExport.h"
#include "agent/formats/NetworkReader.h"

namespace agent {
namespace {

NS_DOMAIN::TopoNode_T domainNode(const TopoAgent::NewNode_T& node) {
  NS_DOMAIN::TopoNode_T result;
  result.nodeId = node.id;
  result.parentId = node.parent;
  result.parentType = typeOf(node.parentKind);
  result.nativeName = node.name;
  result.nodeType = typeOf(node.kind);
  result.attribute3 = node.nodeParam1;
  result.attribute4 = node.nodeParam2;
  result.extendedAttributes = domainPairs(node.attributes);
  return result;
}

std::string_view contentText(const TopoAgent::Content_T& content) {
  return {reinterpret_cast<const char*>(content.get_buffer()), content.length()};
}

TopoAgent::BackupPart_T tmfPart(const Backups::Part& part) {
  TopoAgent::BackupPart_T result;
  result.size = part.size;
  result.content.length(static_cast<CORBA::ULong>(part.content.size()));
  std::copy(part.content.begin(), part.content.end(), result.content.get_buffer());
  result.isLast = part.isLast;
  return result;
}

std::string noSubject() {
  return "";
}

std::optional<GraphmlNumbering> numberingOf(const TopoAgent::ImportOptions_T& options) {
  return options.firstElement == 0
             ? std::nullopt
             : std::optional(GraphmlNumbering{std::int32_t{options.firstElement}});
}

// The reason of a failure that the file causes begins with the name of the file.
Outcome importFile(NodeService& nodes, const char* fileName, std::string_view content,
                   const TopoAgent::ImportOptions_T& options, ImportSummary& summary) {
  constexpr std::size_t kMostNameBytes = 4096;
  if (options.firstElement < 0) {
    return {kInvalidInput, "the number of the first element must be from 1 to 2147483647"};
  }
  Result<PlacedNetwork> file =
      readNetwork(fileName, content, numberingOf(options), nodes.cancellation());
  if (!file.ok()) {
    return file.outcome();
  }
  Outcome outcome = nodes.import(std::move(file.value().network), summary,
                                 {options.replace, options.dryRun, std::move(file.value().places)});
  if (!outcome.ok() && outcome.code != kInternalError) {
    outcome.reason.insert(0, printable(fileName, kMostNameBytes) + ": ");
  }
  return outcome;
}

CORBA::ULong countOf(std::size_t count) {
  return static_cast<CORBA::ULong>(count);
}

}  // namespace

void ConsoleServant::createNode(const TopoAgent::NewNode_T& node) {
  performChange(
      "createNode", [&] { return inQuotes(node.id.in()); },
      [&] { return nodes_.create(domainNode(node)); });
}

CORBA::ULong ConsoleServant::deleteNode(const char* id) {
  std::size_t removed = 0;
  performChange(
      "deleteNode", [&] { return inQuotes(id) + ", " + std::to_string(removed) + " nodes"; },
      [&] { return nodes_.remove(id, removed); });
  return countOf(removed);
}

void ConsoleServant::renameNode(const char* id, const char* name) {
  performChange(
      "renameNode", [&] { return inQuotes(id) + " to " + inQuotes(name); },
      [&] { return nodes_.rename(id, name); });
}

TopoAgent::ObjectDetails_T* ConsoleServant::getObject(const globaldefs::NVSList_T& name) {
  TopoAgent::ObjectDetails_T_var result;
  perform("getObject", [&] {
    const Result<ObjectDetails> details = attributes_.details(name);
    if (details.ok()) {
      result = new TopoAgent::ObjectDetails_T(tmfDetails(details.value(), attributes_.ems()));
    }
    return details.outcome();
  });
  return result._retn();
}

TopoAgent::ImportSummary_T ConsoleServant::importNetwork(
    const char* fileName, const TopoAgent::Content_T& content,
    const TopoAgent::ImportOptions_T& options) {
  ImportSummary summary;
  const auto work = [&] {
    return importFile(nodes_, fileName, contentText(content), options, summary);
  };
  if (options.dryRun) {
    perform("importNetwork", work);
  } else {
    performChange(
        "importNetwork",
        [&] {
          return inQuotes(fileName) + ", " + std::to_string(summary.topoNodes) + " nodes" +
                 (options.replace ? ", in place of all" : "");
        },
        work);
  }
  return {countOf(summary.topoNodes), countOf(summary.networkElements),
          countOf(summary.clockPositions), countOf(summary.clockLinks),
          countOf(summary.objectLabels)};
}

CORBA::ULongLong ConsoleServant::beginBackup() {
  std::uint64_t id = 0;
  perform(
      "beginBackup", [&] { return backups_.begin(id); }, ReasonRecipients::kLogAndClient);
  return id;
}

CORBA::ULongLong ConsoleServant::beginExport() {
  std::uint64_t id = 0;
  perform(
      "beginExport", [&] { return backups_.beginExport(id, writeJsonNetwork); },
      ReasonRecipients::kLogAndClient);
  return id;
}

TopoAgent::BackupPart_T* ConsoleServant::continueBackup(CORBA::ULongLong backup) {
  TopoAgent::BackupPart_T_var result;
  perform(
      "continueBackup",
      [&] {
        Backups::Part part;
        Outcome outcome = backups_.next(backup, part);
        result = new TopoAgent::BackupPart_T(tmfPart(part));
        return outcome;
      },
      ReasonRecipients::kLogAndClient);
  return result._retn();
}

void ConsoleServant::endBackup(CORBA::ULongLong backup) {
  perform("endBackup", [&] {
    backups_.end(backup);
    return Outcome{};
  });
}

void ConsoleServant::setTestSwitch(CORBA::Boolean on) {
  performChange(
      "setTestSwitch", [&] { return std::string(on ? "on" : "off"); },
      [&] {
        control_.setTestSwitch(on);
        return Outcome{};
      });
}

TopoAgent::Status_T* ConsoleServant::getStatus() {
  TopoAgent::Status_T_var status;
  perform("getStatus", [&] {
    status = new TopoAgent::Status_T(control_.status());
    return Outcome{};
  });
  return status._retn();
}

void ConsoleServant::reloadModule() {
  performChange(
      "reloadModule", noSubject,
      [&] {
        control_.reloadModule();
        return Outcome{};
      },
      ReasonRecipients::kLogAndClient);
}

}  // namespace agent
