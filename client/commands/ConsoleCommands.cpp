// The commands that call the agent's console. Backup.cpp and Status.cpp have the longer ones.

#include <algorithm>
#include <system_error>

#include "client/agent/Connection.h"
#include "client/base/Failure.h"
#include "client/base/File.h"
#include "client/commands/Backup.h"
#include "client/commands/Commands.h"
#include "client/commands/NodeKinds.h"
#include "client/commands/ObjectDetails.h"
#include "client/commands/ObjectNames.h"
#include "client/commands/Status.h"
#include "client/output/PrintFunctions.h"

namespace topoctl {
namespace {

using TopoAgent::ImportSummary_T;

// ---- results

struct Deletion {
  CORBA::ULong deletedNodes;
};

const RecordFields<Deletion>& deletionFields() {
  static const RecordFields<Deletion> fields = {
      {"deletedNodes",
       [](const Deletion& done) -> Value { return std::int64_t{done.deletedNodes}; }},
  };
  return fields;
}

const RecordFields<ImportSummary_T>& importFields() {
  using Summary = ImportSummary_T;
  static const RecordFields<Summary> fields = {
      {"topoNodes", [](const Summary& added) -> Value { return std::int64_t{added.topoNodes}; }},
      {"networkElements",
       [](const Summary& added) -> Value { return std::int64_t{added.networkElements}; }},
      {"clockPositions",
       [](const Summary& added) -> Value { return std::int64_t{added.clockPositions}; }},
      {"clockLinks", [](const Summary& added) -> Value { return std::int64_t{added.clockLinks}; }},
      {"objectLabels",
       [](const Summary& added) -> Value { return std::int64_t{added.objectLabels}; }},
  };
  return fields;
}

// ---- import

std::string readNetworkFile(const std::string& path, std::size_t limit) {
  try {
    return readFile(path, limit);
  } catch (const std::system_error& error) {
    throw Failure(ExitCode::kUsage,
                  "the file '" + path + "' cannot be read: " + error.code().message());
  }
}

TopoAgent::Content_T* toContent(const std::string& bytes) {
  TopoAgent::Content_T_var content = new TopoAgent::Content_T;
  content->length(static_cast<CORBA::ULong>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), content->get_buffer());
  return content._retn();
}

[[noreturn]] void fileTooLarge(const Options& options) {
  throw Failure(ExitCode::kCallFailed,
                "the file '" + options.arguments.file +
                    "' is over the size limit: raise --max-message of topoctl (now " +
                    std::to_string(options.access.maxMessageBytes) + ") and of the agent");
}

TopoAgent::ImportOptions_T importOptions(const Arguments& arguments) {
  TopoAgent::ImportOptions_T options;
  options.replace = arguments.replace;
  options.dryRun = arguments.dryRun;
  options.firstElement = arguments.firstElement;
  return options;
}

ImportSummary_T sendNetwork(TopoAgent::Console_I_ptr console, const TopoAgent::Content_T& content,
                            const Options& options) {
  try {
    return console->importNetwork(options.arguments.file.c_str(), content,
                                  importOptions(options.arguments));
  } catch (const CORBA::SystemException& failure) {
    if (orb::isMessageTooLarge(failure)) {
      fileTooLarge(options);
    }
    // The agent has answered earlier calls on the connection, so the cause of the closed connection
    // is the import.
    if (orb::isConnectionClosed(failure)) {
      throw Failure(ExitCode::kCallFailed,
                    "the connection broke while the file '" + options.arguments.file +
                        "' was imported: the agent ended, or the file is over the agent's size "
                        "limit; raise --max-message of the agent");
    }
    throw;
  }
}

// ---- commands

PrintFunction createNode(TopoAgent::Console_I_ptr console, const Options& options) {
  const TypedNode& typed = options.arguments.node;
  TopoAgent::NewNode_T node;
  node.id = typed.id.c_str();
  node.parent = typed.parent.c_str();
  node.parentKind = toNodeKind(typed.parentKind);
  node.name = typed.name.c_str();
  node.kind = toNodeKind(typed.kind);
  node.nodeParam1 = typed.params.first;
  node.nodeParam2 = typed.params.second;
  node.attributes = toList(typed.attributes);
  console->createNode(node);
  return printNothing;
}

PrintFunction deleteNode(TopoAgent::Console_I_ptr console, const Options& options) {
  const Deletion done = {console->deleteNode(options.arguments.node.id.c_str())};
  return recordPrinter(done, deletionFields(), options.style());
}

PrintFunction renameNode(TopoAgent::Console_I_ptr console, const Options& options) {
  const TypedNode& node = options.arguments.node;
  console->renameNode(node.id.c_str(), node.name.c_str());
  return printNothing;
}

PrintFunction importNetwork(TopoAgent::Console_I_ptr console, const Options& options) {
  const std::string& path = options.arguments.file;
  const std::string bytes = readNetworkFile(path, options.access.maxMessageBytes);
  if (bytes.size() > options.access.maxMessageBytes) {
    fileTooLarge(options);
  }
  const TopoAgent::Content_T_var content = toContent(bytes);
  const ImportSummary_T added = sendNetwork(console, content.in(), options);
  return recordPrinter(added, importFields(), options.style());
}

PrintFunction setTestSwitch(TopoAgent::Console_I_ptr console, const Options& options) {
  console->setTestSwitch(options.arguments.on);
  return printNothing;
}

PrintFunction reloadModule(TopoAgent::Console_I_ptr console, const Options&) {
  console->reloadModule();
  return printNothing;
}

}  // namespace

CallFunction atConsole(ConsoleFunction function) {
  return [function](const CommandContext& context) {
    return callObject<TopoAgent::Console_I>(
        context.orb, context.options.access, kConsole,
        [&](TopoAgent::Console_I_ptr console) { return function(console, context.options); });
  };
}

std::vector<Command> consoleCommands() {
  return {
      {"node create", atConsole(createNode)},
      {"node delete", atConsole(deleteNode)},
      {"node rename", atConsole(renameNode)},
      {"import", atConsole(importNetwork)},
      {"backup", atConsole(backup)},
      {"export", atConsole(exportNetwork)},
      {"restore", atConsole(importNetwork)},
      {"test-switch", atConsole(setTestSwitch)},
      {"get", atConsole(getObject)},
      {"status", status},
      {"module reload", atConsole(reloadModule)},
  };
}

}  // namespace topoctl
