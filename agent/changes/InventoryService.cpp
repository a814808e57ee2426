#include "agent/changes/InventoryService.h"

#include <initializer_list>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/base/TextChecks.h"
#include "agent/changes/RecordNames.h"
#include "agent/changes/ServiceOutcome.h"

namespace agent {
namespace {

using NS_DOMAIN::ClockPositionInfo_T;
using NS_DOMAIN::ClockTopoLinkInfo_T;
using Change = NetworkWriter::Change;

struct Field {
  const char* name;
  std::string_view text;
};

Outcome checkFields(const std::string& subject, std::initializer_list<Field> fields) {
  Outcome outcome;
  for (const Field& field : fields) {
    if (outcome.ok()) {
      outcome = checkText(std::string("the ") + field.name + " of " + subject, field.text);
    }
  }
  return outcome;
}

std::string_view textIn(const std::optional<std::string>& field) {
  return field ? std::string_view(*field) : std::string_view();
}

// Adds a network of one record. find(model) returns the present record with the same id, or no
// value.
template <typename Find>
Outcome addRecord(NetworkWriter& writer, const std::string& subject, Find find, Network network) {
  Change change(writer);
  if (find(change.model())) {
    return {kAlreadyExists, subject + " exists already"};
  }
  change.commit(change.model().prepareAddition(std::move(network)));
  return {};
}

// Commits the change that prepare(model, record) returns. find(model) returns the record, or no
// value.
template <typename Find, typename Prepare>
Outcome changeRecord(NetworkWriter& writer, const std::string& subject, Find find,
                     Prepare prepare) {
  Change change(writer);
  const auto record = find(change.model());
  if (!record) {
    return {kEntityNotFound, "no " + subject};
  }
  change.commit(prepare(change.model(), *record));
  return {};
}

// --- The functions that find a record.

auto element(std::int32_t number) {
  return [number](const NetworkModel& model) { return model.networkElement(number); };
}

auto position(const std::string& reference) {
  return [&reference](const NetworkModel& model) { return model.clockPosition(reference); };
}

auto link(const std::string& id) {
  return [&id](const NetworkModel& model) { return model.clockLink(id); };
}

}  // namespace

// --- Network elements.

Outcome InventoryService::createElement(const NetworkElement& newElement) {
  const auto subject = [&] { return elementNamed(newElement.number); };
  return outcomeOf(subject, [&] {
    Outcome checked = checkFields(subject(), {{"name", newElement.name}});
    if (!checked.ok()) {
      return checked;
    }
    Network network;
    network.networkElements.push_back({newElement.number, newElement.name, newElement.shown});
    return addRecord(writer_, subject(), element(newElement.number), std::move(network));
  });
}

Outcome InventoryService::renameElement(std::int32_t number, std::string_view name) {
  const auto subject = [&] { return elementNamed(number); };
  return outcomeOf(subject, [&] {
    Outcome checked = checkFields(subject(), {{"name", name}});
    if (!checked.ok()) {
      return checked;
    }
    return changeRecord(writer_, subject(), element(number),
                        [&](NetworkModel& model, const NetworkElement&) {
                          return model.prepareElementRenaming(number, std::string(name));
                        });
  });
}

Outcome InventoryService::setElementShown(std::int32_t number, bool shown) {
  const auto subject = [&] { return elementNamed(number); };
  return outcomeOf(subject, [&] {
    return changeRecord(
        writer_, subject(), element(number), [&](NetworkModel& model, NetworkElement record) {
          const bool hasNode = model.nodeShownAs({kManagedElementType, number}).has_value();
          record.shown = shown || hasNode;
          record.shownForNode = !shown && hasNode;
          return model.prepareUpdate(std::move(record));
        });
  });
}

Outcome InventoryService::removeElement(std::int32_t number) {
  const auto subject = [&] { return elementNamed(number); };
  return outcomeOf(subject, [&] {
    return changeRecord(writer_, subject(), element(number),
                        [&](NetworkModel& model, const NetworkElement&) {
                          return model.prepareElementRemoval(number);
                        });
  });
}

// --- Clock positions.

Outcome InventoryService::createClockPosition(const ClockPositionInfo_T& newPosition) {
  const auto subject = [&] { return positionNamed(newPosition.reference); };
  return outcomeOf(subject, [&] {
    Outcome checked = checkFields(
        subject(), {{"reference", newPosition.reference}, {"label", newPosition.label}});
    if (!checked.ok()) {
      return checked;
    }
    Network network;
    ClockPositionInfo_T& record = network.clockPositions.emplace_back();
    record.reference = newPosition.reference;
    record.label = newPosition.label;
    record.value1 = newPosition.value1;
    record.value2 = newPosition.value2;
    return addRecord(writer_, subject(), position(newPosition.reference), std::move(network));
  });
}

Outcome InventoryService::changeClockPosition(const std::string& reference,
                                              const ClockPositionFields& fields) {
  const auto subject = [&] { return positionNamed(reference); };
  return outcomeOf(subject, [&] {
    Outcome checked = checkFields(subject(), {{"label", textIn(fields.label)}});
    if (!checked.ok()) {
      return checked;
    }
    return changeRecord(writer_, subject(), position(reference),
                        [&](NetworkModel& model, ClockPositionInfo_T record) {
                          record.label = fields.label.value_or(record.label);
                          if (fields.values) {
                            record.value1 = fields.values->first;
                            record.value2 = fields.values->second;
                          }
                          return model.prepareUpdate(std::move(record));
                        });
  });
}

Outcome InventoryService::removeClockPosition(const std::string& reference) {
  const auto subject = [&] { return positionNamed(reference); };
  return outcomeOf(subject, [&] {
    return changeRecord(writer_, subject(), position(reference),
                        [&](NetworkModel& model, const ClockPositionInfo_T&) {
                          return model.preparePositionRemoval(reference);
                        });
  });
}

// --- Clock links.

Outcome InventoryService::createClockLink(const ClockTopoLinkInfo_T& newLink) {
  const auto subject = [&] { return linkNamed(newLink.linkId); };
  return outcomeOf(subject, [&] {
    Outcome checked = checkFields(subject(), {{"id", newLink.linkId},
                                              {"name", newLink.nativeName},
                                              {"A end", newLink.aEndReference},
                                              {"Z end", newLink.zEndReference}});
    if (!checked.ok()) {
      return checked;
    }
    Network network;
    ClockTopoLinkInfo_T& record = network.clockLinks.emplace_back();
    record.linkId = newLink.linkId;
    record.nativeName = newLink.nativeName;
    record.aEndReference = newLink.aEndReference;
    record.zEndReference = newLink.zEndReference;
    return addRecord(writer_, subject(), link(newLink.linkId), std::move(network));
  });
}

Outcome InventoryService::changeClockLink(const std::string& id, const ClockLinkFields& fields) {
  const auto subject = [&] { return linkNamed(id); };
  return outcomeOf(subject, [&] {
    Outcome checked = checkFields(subject(), {{"name", textIn(fields.name)},
                                              {"A end", textIn(fields.aEnd)},
                                              {"Z end", textIn(fields.zEnd)}});
    if (!checked.ok()) {
      return checked;
    }
    return changeRecord(writer_, subject(), link(id),
                        [&](NetworkModel& model, ClockTopoLinkInfo_T record) {
                          record.nativeName = fields.name.value_or(record.nativeName);
                          record.aEndReference = fields.aEnd.value_or(record.aEndReference);
                          record.zEndReference = fields.zEnd.value_or(record.zEndReference);
                          return model.prepareUpdate(std::move(record));
                        });
  });
}

Outcome InventoryService::removeClockLink(const std::string& id) {
  const auto subject = [&] { return linkNamed(id); };
  return outcomeOf(subject, [&] {
    return changeRecord(writer_, subject(), link(id),
                        [&](NetworkModel& model, const ClockTopoLinkInfo_T&) {
                          return model.prepareLinkRemoval(id);
                        });
  });
}

// --- Labels.

Outcome InventoryService::setLabel(const ObjectKey& key, std::string_view label) {
  const auto subject = [&] { return labelNamed(key); };
  return outcomeOf(subject, [&] {
    Outcome checked = checkFields(subject(), {{"id", key.id}, {"text", label}});
    if (checked.ok() && label.empty()) {
      checked = {kInvalidName, "the text of the " + subject() + " is empty"};
    }
    if (checked.ok()) {
      Change(writer_).commit(NetworkModel::prepareLabel(key, std::string(label)));
    }
    return checked;
  });
}

Outcome InventoryService::removeLabel(const ObjectKey& key) {
  const auto subject = [&] { return labelNamed(key); };
  return outcomeOf(subject, [&]() -> Outcome {
    Change change(writer_);
    if (!change.model().hasLabel(key)) {
      return {kEntityNotFound, "no " + subject()};
    }
    change.commit(NetworkModel::prepareLabel(key, ""));
    return {};
  });
}

}  // namespace agent
