#include "tests/unit/agent/notifications/Events.h"

#include <cstdlib>
#include <ostream>

#include "idl/NotificationLayout.h"

namespace notification_tests {
namespace {

std::string pairs(const globaldefs::NVSList_T& list) {
  std::string text;
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    text += std::string(i == 0 ? "" : ", ") + list[i].name.in() + "=" + list[i].value.in();
  }
  return "{" + text + "}";
}

Value valueOf(const CORBA::Any& value);

std::string pairs(const notifications::NVList_T& list) {
  std::string text;
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    const Value value = valueOf(list[i].value);
    text +=
        std::string(i == 0 ? "" : ", ") + list[i].name.in() + "=" + value.type + " " + value.text;
  }
  return "[" + text + "]";
}

Value valueOf(const CORBA::Any& value) {
  const char* text = nullptr;
  CORBA::ULongLong number = 0;
  CORBA::Boolean flag = false;
  notifications::ObjectType_T type{};
  const globaldefs::NVSList_T* name = nullptr;
  const notifications::NVList_T* attributes = nullptr;
  if (value >>= text) {
    return {"string", text};
  }
  if (value >>= number) {
    return {"ulonglong", std::to_string(number)};
  }
  if (value >>= CORBA::Any::to_boolean(flag)) {
    return {"boolean", flag ? "true" : "false"};
  }
  if (value >>= type) {
    return {"type", std::to_string(type)};
  }
  if (value >>= name) {
    return {"name", pairs(*name)};
  }
  if (value >>= attributes) {
    return {"attributes", pairs(*attributes)};
  }
  const CORBA::TypeCode_var code = value.type();
  return code->kind() == CORBA::tk_null ? kNoValue : Value{"other", ""};
}

// The number in a field, which is a text or an unsigned long long. 0 without such a field.
std::uint64_t numberIn(const CosNotification::StructuredEvent& event, const char* name) {
  for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
    const char* text = nullptr;
    CORBA::ULongLong number = 0;
    const CosNotification::Property& property = event.filterable_data[i];
    if (std::string(name) != property.name.in()) {
      continue;
    }
    if (property.value >>= text) {
      return std::strtoull(text, nullptr, 10);
    }
    if (property.value >>= number) {
      return number;
    }
  }
  return 0;
}

}  // namespace

bool operator==(const Value& left, const Value& right) {
  return left.type == right.type && left.text == right.text;
}

void PrintTo(const Value& value, std::ostream* out) {
  *out << value.type << " '" << value.text << "'";
}

bool operator==(const Field& left, const Field& right) {
  return left.name == right.name && left.value == right.value;
}

void PrintTo(const Field& field, std::ostream* out) {
  *out << field.name << ": ";
  PrintTo(field.value, out);
}

Value EventParts::at(const std::string& field) const {
  for (const Field& each : fields) {
    if (each.name == field) {
      return each.value;
    }
  }
  return kNoValue;
}

bool operator==(const EventParts& left, const EventParts& right) {
  return left.domain == right.domain && left.type == right.type && left.name == right.name &&
         left.variableHeaders == right.variableHeaders && left.fields == right.fields &&
         left.body == right.body;
}

void PrintTo(const EventParts& parts, std::ostream* out) {
  *out << parts.domain << ' ' << parts.type << " '" << parts.name << "', variable headers "
       << parts.variableHeaders << ", ";
  for (const Field& field : parts.fields) {
    PrintTo(field, out);
    *out << ", ";
  }
  *out << "body ";
  PrintTo(parts.body, out);
}

EventParts partsOf(const CosNotification::StructuredEvent& event) {
  const CosNotification::FixedEventHeader& header = event.header.fixed_header;
  EventParts parts{header.event_type.domain_name.in(),
                   header.event_type.type_name.in(),
                   header.event_name.in(),
                   event.header.variable_header.length(),
                   {},
                   valueOf(event.remainder_of_body)};
  for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
    const CosNotification::Property& property = event.filterable_data[i];
    parts.fields.push_back({property.name.in(), valueOf(property.value)});
  }
  return parts;
}

bool operator==(const Delivered& left, const Delivered& right) {
  return left.id == right.id && left.gap.first == right.gap.first &&
         left.gap.last == right.gap.last && left.gap.count == right.gap.count;
}

void PrintTo(const Delivered& delivered, std::ostream* out) {
  if (delivered.id != 0) {
    *out << "event " << delivered.id;
  } else {
    *out << "gap from " << delivered.gap.first << " to " << delivered.gap.last << ", count "
         << delivered.gap.count;
  }
}

Delivered event(std::uint64_t id) {
  return {id, {}};
}

Delivered gap(std::uint64_t first, std::uint64_t last, std::uint64_t count) {
  return {0, {first, last, count}};
}

Delivered deliveredBy(const CosNotification::StructuredEvent& structured) {
  namespace layout = notification_layout;
  if (std::string(layout::kEventsLost) !=
      structured.header.fixed_header.event_type.type_name.in()) {
    return event(numberIn(structured, layout::kNotificationId));
  }
  return gap(numberIn(structured, layout::kFirstLostId), numberIn(structured, layout::kLastLostId),
             numberIn(structured, layout::kLostCount));
}

globaldefs::NVSList_T objectName(const char* objectClass, const char* id) {
  globaldefs::NVSList_T name;
  name.length(2);
  name[0].name = CORBA::string_dup("EMS");
  name[0].value = CORBA::string_dup("E");
  name[1].name = CORBA::string_dup(objectClass);
  name[1].value = CORBA::string_dup(id);
  return name;
}

notifications::NVList_T attribute(const char* name, const char* value) {
  notifications::NVList_T attributes;
  attributes.length(1);
  attributes[0].name = CORBA::string_dup(name);
  attributes[0].value <<= value;
  return attributes;
}

std::uint64_t idOf(std::uint64_t change, std::uint64_t position) {
  return change << 20 | position;
}

agent::EventTime someTime() {
  return agent::EventTime(std::chrono::milliseconds(1709251198760));
}

bool operator==(const ReceiverState& left, const ReceiverState& right) {
  return left.isChannel == right.isChannel && left.isConnected == right.isConnected &&
         left.queued == right.queued && left.sent == right.sent && left.lost == right.lost;
}

void PrintTo(const ReceiverState& state, std::ostream* out) {
  *out << (state.isChannel ? "channel" : "subscriber") << (state.isConnected ? "" : ", down")
       << ", queued " << state.queued << ", sent " << state.sent << ", lost " << state.lost;
}

ReceiverState stateOf(const TopoAgent::ReceiverStatus_T& status) {
  return {status.isChannel, status.isConnected, status.queued, status.sent, status.lost};
}

ReceiverState subscriber(Queued queued, Sent sent, Lost lost) {
  return {false, true, queued.count, sent.count, lost.count};
}

ReceiverState channel(Queued queued, Sent sent, Lost lost) {
  return {true, true, queued.count, sent.count, lost.count};
}

ReceiverState downChannel(Queued queued, Sent sent, Lost lost) {
  return {true, false, queued.count, sent.count, lost.count};
}

void Gate::open() {
  const std::lock_guard<std::mutex> lock(mutex_);
  open_ = true;
  opened_.notify_all();
}

bool Gate::wait() {
  std::unique_lock<std::mutex> lock(mutex_);
  return opened_.wait_for(lock, kPatience, [this] { return open_; });
}

bool eventually(const std::function<bool()>& condition) {
  std::mutex mutex;
  std::condition_variable never;
  const auto end = std::chrono::steady_clock::now() + kPatience;
  std::unique_lock<std::mutex> lock(mutex);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    never.wait_for(lock, std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace notification_tests
