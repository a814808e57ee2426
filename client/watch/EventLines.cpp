#include "client/watch/EventLines.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <ostream>
#include <string_view>
#include <utility>

#include "client/base/Utf8.h"
#include "client/output/Json.h"
#include "client/output/OutputStream.h"
#include "client/output/Table.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;
using topologicalLink::TopologicalLink_T;
using TopoManagementManager::Node_T;

constexpr std::string_view kGap = "  ";

// The form of emsTime: yyyyMMddHHmmss.sZ.
std::string stamp(TimePoint time) {
  const auto tenths = std::chrono::duration_cast<std::chrono::duration<std::int64_t, std::deci>>(
                          time.time_since_epoch())
                          .count();
  const auto seconds = static_cast<std::time_t>(tenths / 10);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 32> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &utc);
  return std::string(text.data(), length) + "." + std::to_string(tenths % 10) + "Z";
}

// ---- json

const char* jsonName(EventKind kind) {
  switch (kind) {
    case EventKind::kCreation:
      return "creation";
    case EventKind::kDeletion:
      return "deletion";
    case EventKind::kChange:
      return "change";
    case EventKind::kLost:
      return "lost";
    case EventKind::kOther:
      return "other";
  }
  return "other";
}

void addText(Json& object, const char* name, const std::optional<std::string>& text) {
  if (text) {
    object[name] = validUtf8(*text);
  }
}

void addObject(Json& line, const Event& event) {
  if (const auto* node = std::get_if<Node_T>(&event.object)) {
    line["object"] = toJson(*node, nodeFields());
  } else if (const auto* link = std::get_if<TopologicalLink_T>(&event.object)) {
    line["object"] = toJson(*link, linkFields());
  }
}

void addAttributes(Json& line, const Event& event) {
  Json attributes = Json::array();
  for (const ChangedAttribute& changed : event.attributes) {
    Json attribute;
    attribute["name"] = validUtf8(changed.name);
    attribute["value"] = toJson(borrowedValue(changed.value));
    attributes.push_back(std::move(attribute));
  }
  line["attributes"] = std::move(attributes);
}

std::string jsonLine(const Event& event) {
  Json line;
  line["event"] = jsonName(event.kind);
  line["type"] = validUtf8(event.type);
  addText(line, "notificationId", event.notificationId);
  if (event.objectName) {
    line["objectName"] = toJson(*event.objectName);
  }
  addText(line, "objectType", event.objectType);
  addText(line, "emsTime", event.emsTime);
  addText(line, "neTime", event.neTime);
  if (event.edgePointRelated) {
    line["edgePointRelated"] = *event.edgePointRelated;
  }
  addObject(line, event);
  if (event.kind == EventKind::kChange || !event.attributes.empty()) {
    addAttributes(line, event);
  }
  addText(line, "firstLostId", event.firstLostId);
  addText(line, "lastLostId", event.lastLostId);
  if (event.lostCount) {
    line["lostCount"] = *event.lostCount;
  }
  if (event.isResync) {
    line["resync"] = true;
  }
  return line.dump();
}

// ---- table

bool isStamp(const std::string& text) {
  const std::string form = "dddddddddddddd.dZ";
  return text.size() == form.size() &&
         std::equal(text.begin(), text.end(), form.begin(), [](char c, char wanted) {
           return wanted == 'd' ? c >= '0' && c <= '9' : c == wanted;
         });
}

// 2026-11-21 10:03:07.4Z; a time of another form stays as sent, with control characters escaped.
std::string readableTime(const std::string& text) {
  if (!isStamp(text)) {
    return escapeControls(text);
  }
  return text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6, 2) + " " +
         text.substr(8, 2) + ":" + text.substr(10, 2) + ":" + text.substr(12);
}

// CLASS=VALUE of the last pair of the name.
std::string tableObject(const std::optional<NVSList_T>& name) {
  if (!name || name->length() == 0) {
    return "(no name)";
  }
  return tableText(NamePairs{&*name});
}

std::string quoted(const char* text) {
  return '"' + escapeControls(text) + '"';
}

std::string tableCreation(const Event& event) {
  std::string name = tableObject(event.objectName);
  if (const auto* node = std::get_if<Node_T>(&event.object)) {
    return name + std::string(kGap) + quoted(node->nativeEMSName.in());
  }
  if (const auto* link = std::get_if<TopologicalLink_T>(&event.object)) {
    return name + std::string(kGap) + quoted(link->nativeEMSName.in());
  }
  return name;
}

std::string tableChange(const Event& event) {
  std::string line = tableObject(event.objectName);
  for (const ChangedAttribute& changed : event.attributes) {
    const auto* const text = std::get_if<std::string>(&changed.value);
    line += std::string(kGap) + escapeControls(changed.name) + "=" +
            (text != nullptr ? quoted(text->c_str()) : tableText(borrowedValue(changed.value)));
  }
  return line;
}

std::string tableLost(const Event& event) {
  const std::string range = escapeControls(event.firstLostId.value_or("?")) + " to " +
                            escapeControls(event.lastLostId.value_or("?"));
  const std::uint64_t count = event.lostCount.value_or(0);
  return (count == 0 ? "an unknown number of" : std::to_string(count)) + " notifications, ids " +
         range;
}

std::string tableText(const Event& event) {
  const std::string gap(kGap);
  switch (event.kind) {
    case EventKind::kCreation:
      return "created" + gap + tableCreation(event);
    case EventKind::kDeletion:
      return "deleted" + gap + tableObject(event.objectName);
    case EventKind::kChange:
      return "changed" + gap + tableChange(event);
    case EventKind::kLost:
      return "lost" + gap + tableLost(event);
    case EventKind::kOther:
      break;
  }
  return "other" + gap + escapeControls(event.type) + gap + tableObject(event.objectName);
}

std::string tableLine(const std::string& time, const std::string& text) {
  return readableTime(time) + std::string(kGap) + text;
}

}  // namespace

EventLines::EventLines(std::ostream& out, Format format, Clock clock)
    : out_(out), format_(format), clock_(std::move(clock)) {}

void EventLines::printEvent(const Event& event) {
  if (format_ == Format::kJson) {
    write(jsonLine(event));
    return;
  }
  const std::string time =
      event.emsTime && !event.emsTime->empty() ? *event.emsTime : stamp(clock_());
  write(tableLine(time, tableText(event) + (event.isResync ? "  (resync)" : "")));
}

void EventLines::printWatching(std::size_t nodes) {
  const std::string time = stamp(clock_());
  if (format_ == Format::kJson) {
    write(Json({{"event", "watching"}, {"nodes", nodes}, {"time", time}}).dump());
  } else {
    write(tableLine(time, "watching  " + std::to_string(nodes) + " nodes"));
  }
}

void EventLines::printDisconnected(const std::string& reason) {
  printReason("disconnected", reason);
}

void EventLines::printSilent(const std::string& reason) {
  printReason("silent", reason);
}

void EventLines::printReason(const char* kind, const std::string& reason) {
  const std::string time = stamp(clock_());
  if (format_ == Format::kJson) {
    write(Json({{"event", kind}, {"reason", validUtf8(reason)}, {"time", time}}).dump());
  } else {
    write(tableLine(time, kind + std::string(kGap) + escapeControls(reason)));
  }
}

void EventLines::write(const std::string& line) {
  out_ << line << '\n';
  flush(out_);
}

}  // namespace topoctl
