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
            "moduleState         MS_RELOADING\n"
            "moduleLoads         1\n"
            "testSwitch          yes\n"
            "topoNodes           2\n"
            "iterators           3\n"
            "subscriptions       4\n"
            "eventsQueued        5\n"
            "eventsDropped       18446744073709551615\n"
            "notifications       7\n"
            "subscribersDropped  8\n"
            "\n"
            "receiver          isChannel  isConnected  queued  sent  lost\n"
            "127.0.0.1:4711    no         yes               9    10    11\n"
            "channel \\x1b[31m  yes        no               12    13    14\n");
}

TEST(Status, IsOneObjectInJson) {
  EXPECT_EQ(printed(makeStatus(), Format::kJson),
            R"({"moduleState":"MS_RELOADING","moduleLoads":1,"testSwitch":true,"topoNodes":2,)"
            R"("iterators":3,"subscriptions":4,"eventsQueued":5,)"
            R"("eventsDropped":18446744073709551615,"notifications":7,"subscribersDropped":8,)"
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
            "name,value\r\nmoduleState,MS_RELOADING\r\nmoduleLoads,1\r\ntestSwitch,true\r\n"
            "topoNodes,2\r\niterators,3\r\nsubscriptions,4\r\neventsQueued,5\r\n"
            "eventsDropped,18446744073709551615\r\nnotifications,7\r\nsubscribersDropped,8\r\n"
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
