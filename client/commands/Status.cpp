#include "client/commands/Status.h"

#include <array>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

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

// All but the receivers.
const Description<Status_T>& statusDescription() {
  using Status = Status_T;
  static const Description<Status> description = {
      // The ORB delivers no other value than those of the enumeration.
      {"moduleState",
       [](const Status& status) -> Value {
         return std::string_view(kModuleStates[static_cast<std::size_t>(status.moduleState)]);
       }},
      {"moduleLoads",
       [](const Status& status) -> Value { return std::int64_t{status.moduleLoads}; }},
      {"testSwitch", [](const Status& status) -> Value { return bool{status.testSwitch}; }},
      {"topoNodes", [](const Status& status) -> Value { return std::int64_t{status.topoNodes}; }},
      {"iterators", [](const Status& status) -> Value { return std::int64_t{status.iterators}; }},
      {"subscriptions",
       [](const Status& status) -> Value { return std::int64_t{status.subscriptions}; }},
      {"eventsQueued",
       [](const Status& status) -> Value { return std::int64_t{status.eventsQueued}; }},
      {"eventsDropped",
       [](const Status& status) -> Value { return std::uint64_t{status.eventsDropped}; }},
      {"notifications",
       [](const Status& status) -> Value { return std::uint64_t{status.notifications}; }},
      {"subscribersDropped",
       [](const Status& status) -> Value { return std::uint64_t{status.subscribersDropped}; }},
  };
  return description;
}

const Description<ReceiverStatus_T>& receiverDescription() {
  using Receiver = ReceiverStatus_T;
  static const Description<Receiver> description = {
      {"receiver",
       [](const Receiver& receiver) -> Value { return std::string_view(receiver.receiver.in()); }},
      {"isChannel", [](const Receiver& receiver) -> Value { return bool{receiver.isChannel}; }},
      {"isConnected", [](const Receiver& receiver) -> Value { return bool{receiver.isConnected}; }},
      {"queued", [](const Receiver& receiver) -> Value { return std::int64_t{receiver.queued}; }},
      {"sent", [](const Receiver& receiver) -> Value { return std::uint64_t{receiver.sent}; }},
      {"lost", [](const Receiver& receiver) -> Value { return std::uint64_t{receiver.lost}; }},
  };
  return description;
}

// A record a field: its name and its value. Those of receivers are called receivers.0.receiver and
// so on.
class FieldRows final : public Rows {
 public:
  // Borrows the status.
  FieldRows(const Status_T& status, bool withReceivers)
      : status_(status), withReceivers_(withReceivers) {}

  std::vector<std::string_view> fields() const override { return {"name", "value"}; }

  void forEach(const std::function<void(const Row&)>& visit) const override {
    visitFields(status_, statusDescription(), "", visit);
    for (CORBA::ULong i = 0; withReceivers_ && i < status_.receivers.length(); ++i) {
      visitFields(status_.receivers[i], receiverDescription(),
                  std::string(kReceivers) + "." + std::to_string(i) + ".", visit);
    }
  }

 private:
  template <typename Record>
  static void visitFields(const Record& record, const Description<Record>& description,
                          const std::string& prefix, const std::function<void(const Row&)>& visit) {
    for (const auto& field : description) {
      const std::string name = prefix + field.name;
      visit({std::string_view(name), field.value(record)});
    }
  }

  const Status_T& status_;
  const bool withReceivers_;
};

void printTables(const Status_T& status, std::ostream& out) {
  print(FieldRows(status, false), Format::kTable, out);
  out << '\n';
  Batches<ReceiverStatusList_T> receivers;
  receivers.add(new ReceiverStatusList_T(status.receivers));
  print(DescribedRows<ReceiverStatusList_T>(receivers, receiverDescription()), Format::kTable, out);
}

void printObject(const Status_T& status, std::ostream& out) {
  Json object = toJson(status, statusDescription());
  Json receivers = Json::array();
  for (CORBA::ULong i = 0; i < status.receivers.length(); ++i) {
    receivers.push_back(toJson(status.receivers[i], receiverDescription()));
  }
  object[kReceivers] = std::move(receivers);
  out << object.dump() << '\n';
}

}  // namespace

void printStatus(const Status_T& status, Format format, std::ostream& out) {
  switch (format) {
    case Format::kTable:
      return printTables(status, out);
    case Format::kJson:
      return printObject(status, out);
    case Format::kCsv:
      return print(FieldRows(status, true), Format::kCsv, out);
  }
}

PrintFunction status(TopoAgent::Console_I_ptr console, const Options& options) {
  const TopoAgent::Status_T_var received = console->getStatus();
  const auto shared = std::make_shared<const Status_T>(received.in());
  return
      [shared, format = options.format](std::ostream& out) { printStatus(*shared, format, out); };
}

}  // namespace topoctl
