#include "client/commands/Status.h"

#include <array>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "client/agent/Connection.h"
#include "client/agent/Fetch.h"
#include "client/agent/RecordFields.h"
#include "client/output/Json.h"
#include "client/output/Printer.h"

namespace topoctl {
namespace {

using TopoAgent::ReceiverStatus_T;
using TopoAgent::ReceiverStatusList_T;
using TopoAgent::Status_T;

constexpr const char* kReceivers = "receivers";

constexpr std::array<const char*, 3> kModuleStates = {"MS_LOADED", "MS_RELOADING", "MS_MISSING"};
static_assert(kModuleStates.size() == TopoAgent::MS_MISSING + 1);

constexpr std::array<const char*, 3> kEventAccess = {"EA_ALLOWED", "EA_DENIED", "EA_UNKNOWN"};
static_assert(kEventAccess.size() == TopoAgent::EA_UNKNOWN + 1);

// The value of a member of a record, by the type of the member.
template <auto Member, typename Record>
Value text(const Record& record) {
  return std::string_view((record.*Member).in());
}

template <auto Member, typename Record>
Value flag(const Record& record) {
  return bool{record.*Member};
}

template <auto Member, typename Record>
Value number(const Record& record) {
  if constexpr (sizeof(record.*Member) > sizeof(CORBA::ULong)) {
    return std::uint64_t{record.*Member};
  } else {
    return std::int64_t{record.*Member};
  }
}

// The ORB delivers only values of the enumerations.
Value moduleState(const Status_T& status) {
  return std::string_view(kModuleStates[static_cast<std::size_t>(status.moduleState)]);
}

Value eventAccess(const Status_T& status) {
  return std::string_view(kEventAccess[static_cast<std::size_t>(status.eventAccess)]);
}

// The fields of the status except the receivers.
const RecordFields<Status_T>& statusFields() {
  using Status = Status_T;
  static const RecordFields<Status> fields = {
      {"agentVersion", text<&Status::agentVersion>},
      {"moduleVersion", text<&Status::moduleVersion>},
      {"uptimeSeconds", number<&Status::uptimeSeconds>},
      {"store", text<&Status::store>},
      {"emsName", text<&Status::emsName>},
      {"moduleState", moduleState},
      {"moduleLoads", number<&Status::moduleLoads>},
      {"lastReloadError", text<&Status::lastReloadError>},
      {"eventAccess", eventAccess},
      {"testSwitch", flag<&Status::testSwitch>},
      {"topoNodes", number<&Status::topoNodes>},
      {"viewNodes", number<&Status::viewNodes>},
      {"iterators", number<&Status::iterators>},
      {"subscriptions", number<&Status::subscriptions>},
      {"eventsQueued", number<&Status::eventsQueued>},
      {"eventsDropped", number<&Status::eventsDropped>},
      {"notifications", number<&Status::notifications>},
      {"subscribersDropped", number<&Status::subscribersDropped>},
      {"auditLost", number<&Status::auditLost>},
      {"auditFailure", text<&Status::auditFailure>},
  };
  return fields;
}

const RecordFields<ReceiverStatus_T>& receiverFields() {
  using Receiver = ReceiverStatus_T;
  static const RecordFields<Receiver> fields = {
      {"receiver", text<&Receiver::receiver>},
      {"isChannel", flag<&Receiver::isChannel>},
      {"isConnected", flag<&Receiver::isConnected>},
      {"queued", number<&Receiver::queued>},
      {"sent", number<&Receiver::sent>},
      {"lost", number<&Receiver::lost>},
  };
  return fields;
}

// A row with name and value for each field of the status. The fields of the receivers are named
// receivers.0.receiver and so on.
class FieldRows final : public Rows {
 public:
  // Borrows the status.
  FieldRows(const Status_T& status, bool withReceivers)
      : status_(status), withReceivers_(withReceivers) {}

  std::vector<std::string_view> fieldNames() const override { return {"name", "value"}; }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    visitFields(status_, statusFields(), "", visit);
    for (CORBA::ULong i = 0; withReceivers_ && i < status_.receivers.length(); ++i) {
      visitFields(status_.receivers[i], receiverFields(),
                  std::string(kReceivers) + "." + std::to_string(i) + ".", visit);
    }
  }

 private:
  template <typename Record>
  static void visitFields(const Record& record, const RecordFields<Record>& fields,
                          const std::string& prefix, const std::function<void(const Row&)>& visit) {
    for (const auto& field : fields) {
      const std::string name = prefix + field.name;
      visit({std::string_view(name), field.value(record)});
    }
  }

  const Status_T& status_;
  const bool withReceivers_;
};

template <auto Member>
Value partialText(const PartialStatus& status) {
  return std::string_view(status.*Member);
}

const RecordFields<PartialStatus>& partialFields() {
  using Status = PartialStatus;
  static const RecordFields<Status> fields = {
      {"missing", partialText<&Status::missing>},
      {"eventAccess", partialText<&Status::eventAccess>},
      {"viewNodes", number<&Status::viewNodes>},
      {"clockNodes", number<&Status::clockNodes>},
      {"clockLinks", number<&Status::clockLinks>},
      {"capabilities", number<&Status::capabilities>},
  };
  return fields;
}

// A row with name and value for each field.
class PartialRows final : public Rows {
 public:
  // Borrows the status.
  explicit PartialRows(const PartialStatus& status) : status_(status) {}

  std::vector<std::string_view> fieldNames() const override { return {"name", "value"}; }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    for (const auto& field : partialFields()) {
      visit({std::string_view(field.name), field.value(status_)});
    }
  }

 private:
  const PartialStatus& status_;
};

// Returns the number of records of a view. call: requests the view with the operation's arguments
// (a count, a list and an iterator). Fetches one record at most.
template <typename List, typename Iterator, typename Call>
CORBA::ULong sizeOfView(Call call) {
  typename List::_var_type list;
  typename Iterator::_var_type iterator;
  call(1, list.out(), iterator.out());
  const IteratorGuard<Iterator> guard(iterator.in());
  return list->length() + (CORBA::is_nil(iterator) ? 0 : iterator->getLength());
}

void askManager(TopoManagementManager::TopoMgr_I_ptr manager, PartialStatus& status) {
  using topologicalLink::TopologicalLinkIterator_I;
  using topologicalLink::TopologicalLinkList_T;
  using TopoManagementManager::NodeIterator_I;
  using TopoManagementManager::NodeList_T;
  common::CapabilityList_T_var capabilities;
  manager->getCapabilities(capabilities.out());
  status.capabilities = capabilities->length();
  status.viewNodes = sizeOfView<NodeList_T, NodeIterator_I>([&](auto&&... arguments) {
    manager->getTopoSubnetworkViewInfo(std::forward<decltype(arguments)>(arguments)...);
  });
  status.clockNodes = sizeOfView<NodeList_T, NodeIterator_I>([&](auto&&... arguments) {
    manager->getClockSourceSubnetworkViewInfo(std::forward<decltype(arguments)>(arguments)...);
  });
  status.clockLinks =
      sizeOfView<TopologicalLinkList_T, TopologicalLinkIterator_I>([&](auto&&... arguments) {
        manager->getAllClockSourceViewlTopologicalLinks(
            std::forward<decltype(arguments)>(arguments)...);
      });
}

PrintFunction partialStatus(const CommandContext& context, const std::string& missing) {
  PartialStatus status;
  status.missing = missing;
  const AgentAccess& access = context.options.access;
  callObject<TopoManagementManager::TopoMgr_I>(
      context.orb, access, kManager,
      [&status](TopoManagementManager::TopoMgr_I_ptr manager) { askManager(manager, status); });
  try {
    callObject<TopoAgent::Session_I>(
        context.orb, access, kSession, [&status](TopoAgent::Session_I_ptr session) {
          status.eventAccess = kEventAccess[static_cast<std::size_t>(session->getEventAccess())];
        });
  } catch (const ObjectMissing&) {
    status.missing += "; the agent has no session";
  } catch (const CORBA::NO_PERMISSION&) {
    status.missing += "; the session refuses this client (NO_PERMISSION)";
  }
  return [status, style = context.options.style()](std::ostream& out) {
    printPartialStatus(status, style, out);
  };
}

void printTables(const Status_T& status, const OutputStyle& style, std::ostream& out) {
  printRows(FieldRows(status, false), style, out);
  out << '\n';
  Batches<ReceiverStatusList_T> receivers;
  receivers.add(new ReceiverStatusList_T(status.receivers));
  printRows(ListRows<ReceiverStatusList_T>(receivers, receiverFields()), style, out);
}

void printObject(const Status_T& status, std::ostream& out) {
  Json object = toJson(status, statusFields());
  Json receivers = Json::array();
  for (CORBA::ULong i = 0; i < status.receivers.length(); ++i) {
    receivers.push_back(toJson(status.receivers[i], receiverFields()));
  }
  object[kReceivers] = std::move(receivers);
  out << object.dump() << '\n';
}

}  // namespace

void printStatus(const Status_T& status, const OutputStyle& style, std::ostream& out) {
  switch (style.format) {
    case Format::kTable:
      return printTables(status, style, out);
    case Format::kJson:
      return printObject(status, out);
    case Format::kCsv:
      return printRows(FieldRows(status, true), style, out);
  }
}

PrintFunction status(const CommandContext& context) {
  const OutputStyle style = context.options.style();
  try {
    return callObject<TopoAgent::Console_I>(
        context.orb, context.options.access, kConsole,
        [&style](TopoAgent::Console_I_ptr console) -> PrintFunction {
          const TopoAgent::Status_T_var received = console->getStatus();
          const auto shared = std::make_shared<const Status_T>(received.in());
          return [shared, style](std::ostream& out) { printStatus(*shared, style, out); };
        });
  } catch (const ObjectMissing&) {
    return partialStatus(context, "the agent has no console");
  } catch (const CORBA::NO_PERMISSION&) {
    return partialStatus(context, "the console refuses this client (NO_PERMISSION)");
  }
}

void printPartialStatus(const PartialStatus& status, const OutputStyle& style, std::ostream& out) {
  if (style.format == Format::kJson) {
    out << toJson(status, partialFields()).dump() << '\n';
  } else {
    printRows(PartialRows(status), style, out);
  }
}

}  // namespace topoctl
