// The commands that change single records of the agent's network.

#include <optional>
#include <string>

#include "client/commands/Commands.h"
#include "client/commands/NodeKinds.h"
#include "client/commands/ObjectNames.h"
#include "client/output/PrintFunctions.h"

namespace topoctl {
namespace {

using TopoAgent::Console_I_ptr;

TopoAgent::OptionalText_T optional(const std::optional<std::string>& text) {
  TopoAgent::OptionalText_T field;
  if (text) {
    field.length(1);
    field[0] = text->c_str();
  }
  return field;
}

TopoAgent::Numbers_T numbers(const TypedNumbers& typed) {
  TopoAgent::Numbers_T result;
  result.first = typed.first;
  result.second = typed.second;
  return result;
}

TopoAgent::OptionalNumbers_T optional(const std::optional<TypedNumbers>& typed) {
  TopoAgent::OptionalNumbers_T field;
  if (typed) {
    field.length(1);
    field[0] = numbers(*typed);
  }
  return field;
}

PrintFunction moveNode(Console_I_ptr console, const Options& options) {
  const TypedNode& node = options.arguments.node;
  console->moveNode(node.id.c_str(), node.parent.c_str(), toNodeKind(node.parentKind));
  return printNothing;
}

PrintFunction changeNode(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  TopoAgent::OptionalPairs_T attributes;
  if (record.attributes) {
    attributes.length(1);
    attributes[0] = toList(*record.attributes);
  }
  console->changeNode(record.id.c_str(), optional(record.numbers), attributes);
  return printNothing;
}

PrintFunction createElement(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  TopoAgent::Element_T element;
  element.number = record.number;
  element.name = record.name.value_or("").c_str();
  element.isShown = options.arguments.on;
  console->createElement(element);
  return printNothing;
}

PrintFunction renameElement(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  console->renameElement(record.number, record.name->c_str());
  return printNothing;
}

PrintFunction showElement(Console_I_ptr console, const Options& options) {
  console->setElementShown(options.arguments.record.number, true);
  return printNothing;
}

PrintFunction hideElement(Console_I_ptr console, const Options& options) {
  console->setElementShown(options.arguments.record.number, false);
  return printNothing;
}

PrintFunction deleteElement(Console_I_ptr console, const Options& options) {
  console->deleteElement(options.arguments.record.number);
  return printNothing;
}

PrintFunction createClockPosition(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  TopoAgent::ClockPosition_T position;
  position.reference = record.id.c_str();
  position.label = record.name.value_or("").c_str();
  position.values = numbers(record.numbers.value_or(TypedNumbers()));
  console->createClockPosition(position);
  return printNothing;
}

PrintFunction changeClockPosition(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  console->changeClockPosition(record.id.c_str(), optional(record.name), optional(record.numbers));
  return printNothing;
}

PrintFunction deleteClockPosition(Console_I_ptr console, const Options& options) {
  console->deleteClockPosition(options.arguments.record.id.c_str());
  return printNothing;
}

PrintFunction createClockLink(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  TopoAgent::ClockLink_T link;
  link.id = record.id.c_str();
  link.name = record.name.value_or("").c_str();
  link.aEnd = record.aEnd.value_or("").c_str();
  link.zEnd = record.zEnd.value_or("").c_str();
  console->createClockLink(link);
  return printNothing;
}

PrintFunction changeClockLink(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  console->changeClockLink(record.id.c_str(), optional(record.name), optional(record.aEnd),
                           optional(record.zEnd));
  return printNothing;
}

PrintFunction deleteClockLink(Console_I_ptr console, const Options& options) {
  console->deleteClockLink(options.arguments.record.id.c_str());
  return printNothing;
}

PrintFunction setLabel(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  console->setLabel(record.number, record.id.c_str(), record.name->c_str());
  return printNothing;
}

PrintFunction deleteLabel(Console_I_ptr console, const Options& options) {
  const TypedRecord& record = options.arguments.record;
  console->deleteLabel(record.number, record.id.c_str());
  return printNothing;
}

}  // namespace

std::vector<Command> recordCommands() {
  return {
      {"node move", atConsole(moveNode)},
      {"node change", atConsole(changeNode)},
      {"element create", atConsole(createElement)},
      {"element rename", atConsole(renameElement)},
      {"element show", atConsole(showElement)},
      {"element hide", atConsole(hideElement)},
      {"element delete", atConsole(deleteElement)},
      {"clock-position create", atConsole(createClockPosition)},
      {"clock-position change", atConsole(changeClockPosition)},
      {"clock-position delete", atConsole(deleteClockPosition)},
      {"clock-link create", atConsole(createClockLink)},
      {"clock-link change", atConsole(changeClockLink)},
      {"clock-link delete", atConsole(deleteClockLink)},
      {"label set", atConsole(setLabel)},
      {"label delete", atConsole(deleteLabel)},
  };
}

}  // namespace topoctl
