#include "client/commands/Status.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/unit/client/support/FakeConsole.h"

namespace topoctl {
namespace {

std::string printed(const TopoAgent::Status_T& status, Format format) {
  std::ostringstream out;
  printStatus(status, format, out);
  return out.str();
}

TEST(Status, IsTwoTablesInTheTableFormat) {
  EXPECT_EQ(printed(makeStatus(), Format::kTable),
            "name                value\n"
            "agentVersion        1.2\n"
            "moduleVersion       3.4\n"
            "uptimeSeconds       15\n"
            "store               a.db\n"
            "emsName             E\n"
            "moduleState         MS_RELOADING\n"
            "moduleLoads         1\n"
            "lastReloadError     no file\n"
            "eventAccess         EA_DENIED\n"
            "testSwitch          yes\n"
            "topoNodes           2\n"
            "viewNodes           16\n"
            "iterators           3\n"
            "subscriptions       4\n"
            "eventsQueued        5\n"
            "eventsDropped       18446744073709551615\n"
            "notifications       7\n"
            "subscribersDropped  8\n"
            "auditLost           9\n"
            "auditFailure        No space left on device\n"
            "\n"
            "receiver          isChannel  isConnected  queued  sent  lost\n"
            "127.0.0.1:4711    no         yes               9    10    11\n"
            "channel \\x1b[31m  yes        no               12    13    14\n");
}

TEST(Status, IsOneObjectInJson) {
  EXPECT_EQ(printed(makeStatus(), Format::kJson),
            R"({"agentVersion":"1.2","moduleVersion":"3.4","uptimeSeconds":15,"store":"a.db",)"
            R"("emsName":"E","moduleState":"MS_RELOADING","moduleLoads":1,)"
            R"("lastReloadError":"no file","eventAccess":"EA_DENIED","testSwitch":true,)"
            R"("topoNodes":2,"viewNodes":16,"iterators":3,"subscriptions":4,"eventsQueued":5,)"
            R"("eventsDropped":18446744073709551615,"notifications":7,"subscribersDropped":8,)"
            R"("auditLost":9,"auditFailure":"No space left on device",)"
            R"("receivers":[)"
            R"({"receiver":"127.0.0.1:4711","isChannel":false,"isConnected":true,"queued":9,)"
            R"("sent":10,"lost":11},)"
            R"({"receiver":"channel \u001b[31m","isChannel":true,"isConnected":false,"queued":12,)"
            R"("sent":13,"lost":14}]})"
            "\n");
}

TEST(Status, IsOneRecordAFieldInCsv) {
  TopoAgent::Status_T status = makeStatus();
  status.receivers.length(1);
  EXPECT_EQ(printed(status, Format::kCsv),
            "name,value\r\nagentVersion,1.2\r\nmoduleVersion,3.4\r\nuptimeSeconds,15\r\n"
            "store,a.db\r\nemsName,E\r\nmoduleState,MS_RELOADING\r\nmoduleLoads,1\r\n"
            "lastReloadError,no file\r\neventAccess,EA_DENIED\r\ntestSwitch,true\r\n"
            "topoNodes,2\r\nviewNodes,16\r\niterators,3\r\nsubscriptions,4\r\neventsQueued,5\r\n"
            "eventsDropped,18446744073709551615\r\nnotifications,7\r\nsubscribersDropped,8\r\n"
            "auditLost,9\r\nauditFailure,No space left on device\r\n"
            "receivers.0.receiver,127.0.0.1:4711\r\nreceivers.0.isChannel,false\r\n"
            "receivers.0.isConnected,true\r\nreceivers.0.queued,9\r\nreceivers.0.sent,10\r\n"
            "receivers.0.lost,11\r\n");
}

TEST(Status, AcceptsNoReceivers) {
  TopoAgent::Status_T status = makeStatus();
  status.receivers.length(0);
  const std::string table = printed(status, Format::kTable);
  EXPECT_EQ(table.substr(table.find("\n\n")),
            "\n\nreceiver  isChannel  isConnected  queued  sent  lost\n");
  const std::string json = printed(status, Format::kJson);
  EXPECT_EQ(json.substr(json.find(",\"receivers\"")), ",\"receivers\":[]}\n");
}

}  // namespace
}  // namespace topoctl
