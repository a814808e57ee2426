// Helpers for the tests of notifications: events as texts, names, states and waiting.

#ifndef UNIT_AGENT_NOTIFICATIONS_EVENTS_H
#define UNIT_AGENT_NOTIFICATIONS_EVENTS_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "agent/notifications/Gap.h"
#include "agent/notifications/StructuredEvents.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "orb/notification.h"

namespace notification_tests {

using Texts = std::vector<std::string>;

// Timeout of a wait that succeeds in a test that passes.
constexpr std::chrono::seconds kPatience{20};

// The value of an any: the name of the type, such as "string", and the value as a text.
struct Value {
  std::string type;
  std::string text;
};
bool operator==(const Value& left, const Value& right);
void PrintTo(const Value& value, std::ostream* out);

struct Field {
  std::string name;
  Value value;
};
bool operator==(const Field& left, const Field& right);
void PrintTo(const Field& field, std::ostream* out);

const Value kNoValue{"null", ""};

// All parts of a structured event.
struct EventParts {
  std::string domain;
  std::string type;
  std::string name;
  std::size_t variableHeaders = 0;
  std::vector<Field> fields;
  Value body;

  // The value of a field, or kNoValue.
  Value at(const std::string& field) const;
};
bool operator==(const EventParts& left, const EventParts& right);
void PrintTo(const EventParts& parts, std::ostream* out);

EventParts partsOf(const CosNotification::StructuredEvent& event);

// An event of a receiver: a notification or a gap report.
struct Delivered {
  std::uint64_t id = 0;  // of a notification; 0 for a gap report
  agent::Gap gap;        // of a gap report
};
using Deliveries = std::vector<Delivered>;
bool operator==(const Delivered& left, const Delivered& right);
void PrintTo(const Delivered& delivered, std::ostream* out);

// Expected events.
Delivered event(std::uint64_t id);
Delivered gap(std::uint64_t first, std::uint64_t last, std::uint64_t count);

// The id or the gap of a structured event.
Delivered deliveredBy(const CosNotification::StructuredEvent& event);

// {EMS=E, CLASS=id}.
globaldefs::NVSList_T objectName(const char* objectClass, const char* id);

notifications::NVList_T attribute(const char* name, const char* value);

// The id of a notification.
std::uint64_t idOf(std::uint64_t change, std::uint64_t position);

// 2024-02-29 23:59:58.76 UTC.
agent::EventTime someTime();

// Status of a receiver, without its name.
struct ReceiverState {
  bool isChannel = false;
  bool isConnected = true;
  std::uint64_t queued = 0;
  std::uint64_t sent = 0;
  std::uint64_t lost = 0;
};
using ReceiverStates = std::vector<ReceiverState>;
bool operator==(const ReceiverState& left, const ReceiverState& right);
void PrintTo(const ReceiverState& state, std::ostream* out);

ReceiverState stateOf(const TopoAgent::ReceiverStatus_T& status);

// Named numbers for the functions below.
struct Queued {
  std::uint64_t count;
};
struct Sent {
  std::uint64_t count;
};
struct Lost {
  std::uint64_t count;
};
// Expected states of receivers.
ReceiverState subscriber(Queued queued, Sent sent, Lost lost);
ReceiverState channel(Queued queued, Sent sent, Lost lost);
ReceiverState downChannel(Queued queued, Sent sent, Lost lost);

// Closed until open() is called. Thread-safety: any thread.
class Gate {
 public:
  void open();
  // Returns false when the gate does not open within kPatience.
  bool wait();

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool open_ = false;
};

// A list of entries. Thread-safety: any thread.
template <typename Entry>
class Record {
 public:
  void add(Entry entry) {
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_.push_back(std::move(entry));
    added_.notify_all();
  }

  // Waits for so many entries, for kPatience at most, and returns all entries.
  std::vector<Entry> waitFor(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    added_.wait_for(lock, kPatience, [&] { return entries_.size() >= count; });
    return entries_;
  }

  std::vector<Entry> all() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entries_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable added_;
  std::vector<Entry> entries_;  // guarded by mutex_
};

// Waits until the condition is true. Returns false after kPatience.
bool eventually(const std::function<bool()>& condition);

}  // namespace notification_tests

#endif
