#include "agent/process/Journal.h"

#include <gtest/gtest.h>

#include "tests/support/PrivateJournal.h"

namespace agent {
namespace {

TEST(Journal, ReceivesALineAsAnEntry) {
  support::runWithoutJournal([] {
    const support::JournalSocket journal;
    EXPECT_EQ("", sendToJournal("{\"reason\":\"\"}"));
    EXPECT_EQ("MESSAGE={\"reason\":\"\"}\nPRIORITY=5\nSYSLOG_IDENTIFIER=topo-agentd\n",
              journal.next());
    EXPECT_EQ("", sendToJournal("second"));
    EXPECT_EQ("MESSAGE=second\nPRIORITY=5\nSYSLOG_IDENTIFIER=topo-agentd\n", journal.next());
  });
}

TEST(Journal, ThatDoesNotRunIsAFailure) {
  support::runWithoutJournal([] {
    EXPECT_EQ("the journal does not run: No such file or directory", sendToJournal("line"));
  });
}

TEST(Journal, ThatHasEndedIsAFailure) {
  support::runWithoutJournal([] {
    { const support::JournalSocket journal; }  // leaves its file
    EXPECT_NE("", sendToJournal("line"));
  });
}

}  // namespace
}  // namespace agent
