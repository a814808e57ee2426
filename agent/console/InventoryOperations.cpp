// The operations of the console that change single records of the network.

#include <optional>
#include <string>
#include <utility>

#include "agent/base/PrintableText.h"
#include "agent/console/ConsoleOperation.h"
#include "agent/console/ConsoleServant.h"
#include "agent/console/NodeRecords.h"

namespace agent {
namespace {

std::optional<std::string> optionalText(const TopoAgent::OptionalText_T& field) {
  return field.length() == 0 ? std::nullopt : std::optional<std::string>(field[0].in());
}

std::optional<std::pair<std::int32_t, std::int32_t>> numbersOf(
    const TopoAgent::OptionalNumbers_T& field) {
  return field.length() == 0 ? std::nullopt
                             : std::optional(std::make_pair(std::int32_t{field[0].first},
                                                            std::int32_t{field[0].second}));
}

NodeFields domainFields(const TopoAgent::OptionalNumbers_T& params,
                        const TopoAgent::OptionalPairs_T& attributes) {
  NodeFields fields;
  fields.params = numbersOf(params);
  if (attributes.length() != 0) {
    fields.attributes = domainPairs(attributes[0]);
  }
  return fields;
}

NS_DOMAIN::ClockPositionInfo_T domainPosition(const TopoAgent::ClockPosition_T& position) {
  NS_DOMAIN::ClockPositionInfo_T result;
  result.reference = position.reference;
  result.label = position.label;
  result.value1 = position.values.first;
  result.value2 = position.values.second;
  return result;
}

NS_DOMAIN::ClockTopoLinkInfo_T domainLink(const TopoAgent::ClockLink_T& link) {
  NS_DOMAIN::ClockTopoLinkInfo_T result;
  result.linkId = link.id;
  result.nativeName = link.name;
  result.aEndReference = link.aEnd;
  result.zEndReference = link.zEnd;
  return result;
}

}  // namespace

void ConsoleServant::moveNode(const char* id, const char* parent,
                              TopoAgent::NodeKind_T parentKind) {
  performChange(
      "moveNode", [&] { return inQuotes(id) + " below " + inQuotes(parent); },
      [&] { return nodes_.move(id, parent, typeOf(parentKind)); });
}

void ConsoleServant::changeNode(const char* id, const TopoAgent::OptionalNumbers_T& params,
                                const TopoAgent::OptionalPairs_T& attributes) {
  performChange(
      "changeNode", [&] { return inQuotes(id); },
      [&] { return nodes_.change(id, domainFields(params, attributes)); });
}

void ConsoleServant::createElement(const TopoAgent::Element_T& element) {
  performChange(
      "createElement", [&] { return std::to_string(element.number); },
      [&] {
        return inventory_.createElement({element.number, element.name.in(), element.isShown});
      });
}

void ConsoleServant::renameElement(CORBA::Long number, const char* name) {
  performChange(
      "renameElement", [&] { return std::to_string(number) + " to " + inQuotes(name); },
      [&] { return inventory_.renameElement(number, name); });
}

void ConsoleServant::setElementShown(CORBA::Long number, CORBA::Boolean isShown) {
  performChange(
      "setElementShown", [&] { return std::to_string(number) + (isShown ? " yes" : " no"); },
      [&] { return inventory_.setElementShown(number, isShown); });
}

void ConsoleServant::deleteElement(CORBA::Long number) {
  performChange(
      "deleteElement", [&] { return std::to_string(number); },
      [&] { return inventory_.removeElement(number); });
}

void ConsoleServant::createClockPosition(const TopoAgent::ClockPosition_T& position) {
  performChange(
      "createClockPosition", [&] { return inQuotes(position.reference.in()); },
      [&] { return inventory_.createClockPosition(domainPosition(position)); });
}

void ConsoleServant::changeClockPosition(const char* reference,
                                         const TopoAgent::OptionalText_T& label,
                                         const TopoAgent::OptionalNumbers_T& values) {
  performChange(
      "changeClockPosition", [&] { return inQuotes(reference); },
      [&] {
        return inventory_.changeClockPosition(reference, {optionalText(label), numbersOf(values)});
      });
}

void ConsoleServant::deleteClockPosition(const char* reference) {
  performChange(
      "deleteClockPosition", [&] { return inQuotes(reference); },
      [&] { return inventory_.removeClockPosition(reference); });
}

void ConsoleServant::createClockLink(const TopoAgent::ClockLink_T& link) {
  performChange(
      "createClockLink", [&] { return inQuotes(link.id.in()); },
      [&] { return inventory_.createClockLink(domainLink(link)); });
}

void ConsoleServant::changeClockLink(const char* id, const TopoAgent::OptionalText_T& name,
                                     const TopoAgent::OptionalText_T& aEnd,
                                     const TopoAgent::OptionalText_T& zEnd) {
  performChange(
      "changeClockLink", [&] { return inQuotes(id); },
      [&] {
        return inventory_.changeClockLink(
            id, {optionalText(name), optionalText(aEnd), optionalText(zEnd)});
      });
}

void ConsoleServant::deleteClockLink(const char* id) {
  performChange(
      "deleteClockLink", [&] { return inQuotes(id); },
      [&] { return inventory_.removeClockLink(id); });
}

void ConsoleServant::setLabel(CORBA::Long type, const char* id, const char* label) {
  performChange(
      "setLabel", [&] { return std::to_string(type) + ' ' + inQuotes(id); },
      [&] {
        return inventory_.setLabel({type, id}, label);
      });
}

void ConsoleServant::deleteLabel(CORBA::Long type, const char* id) {
  performChange(
      "deleteLabel", [&] { return std::to_string(type) + ' ' + inQuotes(id); },
      [&] {
        return inventory_.removeLabel({type, id});
      });
}

}  // namespace agent
