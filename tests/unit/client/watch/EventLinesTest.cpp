#include "client/watch/EventLines.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <sstream>

#include "client/base/Failure.h"
#include "orb/idl/notifications.h"
#include "tests/support/OtherTimeZone.h"
#include "tests/support/WithOrb.h"
#include "tests/unit/client/support/MakeEvents.h"

namespace topoctl {
namespace {

using JsonEventLines = support::WithOrb;
using TableEventLines = support::WithOrb;

using std::chrono::milliseconds;

constexpr const char* kName =
    R"([{"name":"EMS","value":"zurich"},{"name":"TopoSubnetwork","value":"core"}])";

TimePoint noon() {
  return TimePoint(milliseconds(1795348799967));  // 2026-11-22T11:59:59.967Z
}

std::string lineOf(const Event& event, Format format) {
  std::ostringstream out;
  EventLines(out, format, noon).printEvent(event);
  return out.str();
}

std::string tableOf(const CosNotification::StructuredEvent& received) {
  return lineOf(decode(received), Format::kTable);
}

std::string jsonOf(const CosNotification::StructuredEvent& received) {
  return lineOf(decode(received), Format::kJson);
}

// ---- json

TEST_F(JsonEventLines, PrintACreation) {
  EXPECT_EQ(
      jsonOf(creation("17", makeNode("core"))),
      std::string(R"({"event":"creation","type":"NT_OBJECT_CREATION","notificationId":"17",)") +
          R"("objectName":)" + kName +
          R"(,"objectType":"OT_MULTILAYER_SUBNETWORK","emsTime":"20261121100307.4Z",)" +
          R"("neTime":"","edgePointRelated":false,"object":{"name":)" + kName +
          R"(,"nativeEMSName":"name of core","nodeType":1,"nodeParam1":-7,)" +
          R"("nodeParam2":47377,"relatedName":[{"name":"EMS","value":"zurich"}],)" +
          R"("additionalInfo":[{"name":"Region","value":"north"}]}})" + "\n");
}

TEST_F(JsonEventLines, PrintADeletion) {
  EXPECT_EQ(
      jsonOf(deletion("18", "core")),
      std::string(R"({"event":"deletion","type":"NT_OBJECT_DELETION","notificationId":"18",)") +
          R"("objectName":)" + kName +
          R"(,"objectType":"OT_MULTILAYER_SUBNETWORK","emsTime":"20261121100307.4Z",)" +
          R"("neTime":"","edgePointRelated":false})" + "\n");
}

TEST_F(JsonEventLines, PrintAChange) {
  const std::string line = jsonOf(renaming("19", "core", "Core \xff"));
  EXPECT_EQ(line.substr(0, 58), R"({"event":"change","type":"NT_ATTRIBUTE_VALUE_CHANGE","noti)");
  EXPECT_EQ(line.substr(line.find(R"("attributes")")),
            "\"attributes\":[{\"name\":\"nativeEMSName\",\"value\":\"Core \ufffd\"}]}\n");
}

TEST_F(JsonEventLines, PrintChangedValuesOfEveryType) {
  Event event;
  event.kind = EventKind::kChange;
  event.attributes = {
      {"a", true}, {"b", std::int64_t{-1}}, {"c", makeNode("core").name}, {"d", {}}};
  const std::string line = lineOf(event, Format::kJson);
  EXPECT_EQ(line.substr(line.find(R"("attributes")")),
            std::string(R"("attributes":[{"name":"a","value":true},{"name":"b","value":-1},)") +
                R"({"name":"c","value":)" + kName + R"(},{"name":"d","value":null}]})" + "\n");
}

TEST_F(JsonEventLines, PrintACreatedLink) {
  Event event;
  event.kind = EventKind::kCreation;
  topologicalLink::TopologicalLink_T link;
  link.direction = globaldefs::CD_BI;
  link.rate = 0;
  link.nativeEMSName = "trunk";
  event.object = link;
  const std::string line = lineOf(event, Format::kJson);
  EXPECT_NE(line.find(R"("object":{)"), std::string::npos) << line;
  EXPECT_NE(line.find(R"("nativeEMSName":"trunk")"), std::string::npos) << line;
}

TEST_F(JsonEventLines, AreValidUtf8ForInvalidTexts) {
  Event event;
  event.type = "NT_\xff";
  event.objectType = "OT_\xff";
  event.emsTime = "\xff";
  event.attributes = {{"a\xff", true}};
  EXPECT_EQ(lineOf(event, Format::kJson),
            "{\"event\":\"other\",\"type\":\"NT_\ufffd\",\"objectType\":\"OT_\ufffd\","
            "\"emsTime\":\"\ufffd\",\"attributes\":[{\"name\":\"a\ufffd\",\"value\":true}]}\n");
}

TEST_F(JsonEventLines, PrintLostNotifications) {
  EXPECT_EQ(jsonOf(lost("5", "9", 0)),
            R"({"event":"lost","type":"NT_EVENTS_LOST","emsTime":"20261121100307.4Z",)"
            R"("firstLostId":"5","lastLostId":"9","lostCount":0})"
            "\n");
}

TEST_F(JsonEventLines, PrintAnUnknownType) {
  EXPECT_EQ(jsonOf(eventOf("NT_\nALARM")), "{\"event\":\"other\",\"type\":\"NT_\\nALARM\"}\n");
  EXPECT_EQ(jsonOf(eventOf("NT_ATTRIBUTE_VALUE_CHANGE")),
            R"({"event":"change","type":"NT_ATTRIBUTE_VALUE_CHANGE","attributes":[]})"
            "\n");
}

TEST_F(JsonEventLines, MarkResyncEvents) {
  Event event;
  event.kind = EventKind::kDeletion;
  event.type = "NT_OBJECT_DELETION";
  event.objectName = makeNode("core").name;
  event.isResync = true;
  EXPECT_EQ(lineOf(event, Format::kJson),
            std::string(R"({"event":"deletion","type":"NT_OBJECT_DELETION","objectName":)") +
                kName + R"(,"resync":true})" + "\n");
}

TEST_F(JsonEventLines, PrintTheStateOfTheConnection) {
  std::ostringstream out;
  EventLines lines(out, Format::kJson, noon);
  lines.printWatching(12);
  lines.printDisconnected("gone\n\xff");
  EXPECT_EQ(out.str(),
            "{\"event\":\"watching\",\"nodes\":12,\"time\":\"20261122115959.9Z\"}\n"
            "{\"event\":\"disconnected\",\"reason\":\"gone\\n\ufffd\",\"time\":"
            "\"20261122115959.9Z\"}\n");
}

// ---- table

TEST_F(TableEventLines, PrintCreationsAndDeletions) {
  EXPECT_EQ(tableOf(creation("17", makeNode("core"))),
            "2026-11-21 10:03:07.4Z  created  TopoSubnetwork=core  \"name of core\"\n");
  EXPECT_EQ(tableOf(deletion("18", "core")),
            "2026-11-21 10:03:07.4Z  deleted  TopoSubnetwork=core\n");
}

TEST_F(TableEventLines, PrintChanges) {
  EXPECT_EQ(tableOf(renaming("19", "core", "Core 2")),
            "2026-11-21 10:03:07.4Z  changed  TopoSubnetwork=core  nativeEMSName=\"Core 2\"\n");
  Event event;
  event.kind = EventKind::kChange;
  event.objectName = makeNode("core").name;
  event.attributes = {
      {"a", true}, {"b", std::int64_t{-1}}, {"c", makeNode("core").name}, {"d", {}}};
  EXPECT_EQ(lineOf(event, Format::kTable),
            "2026-11-22 11:59:59.9Z  changed  TopoSubnetwork=core  a=yes  b=-1  c=EMS=zurich; "
            "TopoSubnetwork=core  d=?\n");
}

TEST_F(TableEventLines, PrintLostNotifications) {
  EXPECT_EQ(tableOf(lost("5", "9", 3)),
            "2026-11-21 10:03:07.4Z  lost  3 notifications, ids 5 to 9\n");
  EXPECT_EQ(tableOf(lost("5", "9", 0)),
            "2026-11-21 10:03:07.4Z  lost  an unknown number of notifications, ids 5 to 9\n");
  EXPECT_EQ(tableOf(eventOf("NT_EVENTS_LOST")),
            "2026-11-22 11:59:59.9Z  lost  an unknown number of notifications, ids ? to ?\n");
}

TEST_F(TableEventLines, PrintAnUnknownType) {
  EXPECT_EQ(tableOf(eventOf("NT_ALARM")), "2026-11-22 11:59:59.9Z  other  NT_ALARM  (no name)\n");
  EXPECT_EQ(tableOf(eventOf("NT_OBJECT_CREATION")), "2026-11-22 11:59:59.9Z  created  (no name)\n");
}

TEST_F(TableEventLines, EscapeControlCharactersInTexts) {
  auto received = renaming("19", "co\nre", "\x1b[31m");
  addData(received, "emsTime") <<= "now\r\n";
  EXPECT_EQ(tableOf(received),
            "now\\r\\n  changed  TopoSubnetwork=co\\nre  nativeEMSName=\"\\x1b[31m\"\n");
}

TEST_F(TableEventLines, EscapeControlCharactersInNames) {
  Event event;
  event.kind = EventKind::kChange;
  addPair(event.objectName.emplace(), "Topo\nSubnetwork", "core");
  event.attributes = {{"na\nme", true}};
  EXPECT_EQ(lineOf(event, Format::kTable),
            "2026-11-22 11:59:59.9Z  changed  Topo\\nSubnetwork=core  na\\nme=yes\n");
  EXPECT_EQ(tableOf(eventOf("NT_\nALARM")),
            "2026-11-22 11:59:59.9Z  other  NT_\\nALARM  (no name)\n");
}

TEST_F(TableEventLines, PrintACreatedLink) {
  Event event;
  event.kind = EventKind::kCreation;
  addPair(event.objectName.emplace(), "ClockTopoLinkId", "l");
  topologicalLink::TopologicalLink_T link;
  link.direction = globaldefs::CD_BI;
  link.rate = 0;
  link.nativeEMSName = "trunk";
  event.object = link;
  EXPECT_EQ(lineOf(event, Format::kTable),
            "2026-11-22 11:59:59.9Z  created  ClockTopoLinkId=l  \"trunk\"\n");
}

TEST_F(TableEventLines, PrintAnEmptyNameAsNoName) {
  Event event;
  event.kind = EventKind::kDeletion;
  event.objectName.emplace();
  EXPECT_EQ(lineOf(event, Format::kTable), "2026-11-22 11:59:59.9Z  deleted  (no name)\n");
}

TEST_F(TableEventLines, PrintTimesOfOtherFormsUnchanged) {
  const auto at = [](const char* time) {
    Event event;
    event.emsTime = time;
    const std::string line = lineOf(event, Format::kTable);
    return line.substr(0, line.find("  "));
  };
  EXPECT_EQ(at("20261121100307.4Z"), "2026-11-21 10:03:07.4Z");
  for (const char* other : {"20261121100307.4Zx", "20261121100307.4", "20261121100307,4Z",
                            "20261121100307.4X", "2026112110030:.4Z", "20261121100307.xZ"}) {
    EXPECT_EQ(at(other), other);
  }
  EXPECT_EQ(at(""), "2026-11-22 11:59:59.9Z");
}

TEST_F(TableEventLines, MarkResyncEvents) {
  Event event;
  event.kind = EventKind::kCreation;
  event.objectName = makeNode("core").name;
  event.object = makeNode("core");
  event.isResync = true;
  EXPECT_EQ(lineOf(event, Format::kTable),
            "2026-11-22 11:59:59.9Z  created  TopoSubnetwork=core  \"name of core\"  (resync)\n");
}

TEST_F(TableEventLines, PrintTheStateOfTheConnection) {
  std::ostringstream out;
  EventLines lines(out, Format::kTable, noon);
  lines.printWatching(12);
  lines.printDisconnected("gone\n");
  EXPECT_EQ(out.str(),
            "2026-11-22 11:59:59.9Z  watching  12 nodes\n"
            "2026-11-22 11:59:59.9Z  disconnected  gone\\n\n");
}

TEST(EventLines, PrintTheTimeInUtc) {
  const support::OtherTimeZone zone;
  std::ostringstream out;
  EventLines(out, Format::kTable, noon).printWatching(1);
  EXPECT_EQ(out.str(), "2026-11-22 11:59:59.9Z  watching  1 nodes\n");
}

TEST(EventLines, ThrowWhenTheStreamFails) {
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  EventLines lines(out, Format::kJson, noon);
  EXPECT_THROW(lines.printWatching(0), Failure);
}

}  // namespace
}  // namespace topoctl
