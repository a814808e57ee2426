// The commands that call the agent's console, run as processes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "orb/traits.h"
#include "tests/support/FakeNaming.h"
#include "tests/unit/client/support/FakeConsole.h"
#include "tests/unit/client/support/RunProgram.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

class Console : public WithAgent {
 protected:
  void SetUp() override {
    WithAgent::SetUp();
    console_ = new FakeConsole(script);
    published_ = server().wellKnownObject("TopoAgentConsole");
    const CORBA::Object_var reference = published_->publish(console_.in());
  }

  void TearDown() override {
    published_.reset();
    unlink(path.c_str());
    WithAgent::TearDown();
  }

  void removeConsole() { published_.reset(); }

  Ended run(const Words& words) { return runAt(agentReference(), words); }

  Ended runAt(const std::string& reference, Words words) {
    script.settle();
    words.insert(words.begin(), {"--agent", reference});
    return runProgram(words);
  }

  // Runs a command that makes one call and prints nothing. Returns the call.
  std::string silentCallOf(const Words& words) {
    const std::size_t before = script.calls().size();
    const Ended ended = run(words);
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(ended.out + ended.err, "");
    EXPECT_EQ(script.calls().size(), before + 1);
    return script.lastCall();
  }

  const std::string path = testing::TempDir() + "topoctl_import." + std::to_string(getpid());

 private:
  PortableServer::Servant_var<FakeConsole> console_;
  std::unique_ptr<orb::WellKnownObject> published_;
};

TEST_F(Console, CreatesNodes) {
  EXPECT_EQ(silentCallOf({"node", "create", "core", "--name", "Core"}),
            "create(core, kind-of , Core, subnetwork, 0, 0)");
  EXPECT_EQ(silentCallOf({"node", "create", "--parent", "7", "--parent-kind", "element", "--name",
                          "Z\u00fcrich", "--kind", "element", "--params", "-1,2", "--attribute",
                          "A=1", "--attribute", "A=x=y", "--", "-8"}),
            "create(-8, element 7, Z\u00fcrich, element, -1, 2, A=1, A=x=y)");
}

TEST_F(Console, RenamesNodes) {
  EXPECT_EQ(silentCallOf({"node", "rename", "core", "Core 2"}), "rename(core, Core 2)");
  EXPECT_EQ(silentCallOf({"node", "rename", "--", "-core", ""}), "rename(-core, )");
}

TEST_F(Console, MovesAndChangesNodes) {
  EXPECT_EQ(silentCallOf({"node", "move", "wk", "core"}), "move(wk, kind-of core)");
  EXPECT_EQ(silentCallOf({"node", "move", "wk", "", "--parent-kind", "subnetwork"}),
            "move(wk, subnetwork )");
  EXPECT_EQ(silentCallOf({"node", "change", "wk", "--params", "1,-2"}), "change-node(wk, 1 -2, -)");
  EXPECT_EQ(silentCallOf({"node", "change", "wk", "--attribute", "a=b", "--attribute", "a="}),
            "change-node(wk, -, [a=b][a=])");
  EXPECT_EQ(silentCallOf({"node", "change", "wk", "--no-attributes"}), "change-node(wk, -, )");
}

TEST_F(Console, ChangesElements) {
  EXPECT_EQ(silentCallOf({"element", "create", "5"}), "create-element(5, , not shown)");
  EXPECT_EQ(silentCallOf({"element", "create", "--name", "Five", "--shown", "--", "-5"}),
            "create-element(-5, Five, shown)");
  EXPECT_EQ(silentCallOf({"element", "rename", "5", "Fünf"}), "rename-element(5, Fünf)");
  EXPECT_EQ(silentCallOf({"element", "show", "5"}), "show-element(5)");
  EXPECT_EQ(silentCallOf({"element", "hide", "5"}), "hide-element(5)");
  EXPECT_EQ(silentCallOf({"element", "delete", "5"}), "delete-element(5)");
}

TEST_F(Console, ChangesClockPositions) {
  EXPECT_EQ(silentCallOf({"clock-position", "create", "NE=5"}), "create-position(NE=5, , 0 0)");
  EXPECT_EQ(
      silentCallOf({"clock-position", "create", "NE=5", "--label", "Five", "--values", "1,2"}),
      "create-position(NE=5, Five, 1 2)");
  EXPECT_EQ(silentCallOf({"clock-position", "change", "NE=5", "--label", ""}),
            "change-position(NE=5, , -)");
  EXPECT_EQ(silentCallOf({"clock-position", "change", "NE=5", "--values", "3,4"}),
            "change-position(NE=5, -, 3 4)");
  EXPECT_EQ(silentCallOf({"clock-position", "delete", "NE=5"}), "delete-position(NE=5)");
}

TEST_F(Console, ChangesClockLinks) {
  EXPECT_EQ(silentCallOf({"clock-link", "create", "k"}), "create-link(k, , , )");
  EXPECT_EQ(silentCallOf({"clock-link", "create", "k", "--name", "SDH/k", "--a-end", "NE=1",
                          "--z-end", "NE=2"}),
            "create-link(k, SDH/k, NE=1, NE=2)");
  EXPECT_EQ(silentCallOf({"clock-link", "change", "k", "--z-end", "NE=3"}),
            "change-link(k, -, -, NE=3)");
  EXPECT_EQ(silentCallOf({"clock-link", "change", "k", "--name", "n", "--a-end", ""}),
            "change-link(k, n, , -)");
  EXPECT_EQ(silentCallOf({"clock-link", "delete", "k"}), "delete-link(k)");
}

TEST_F(Console, SetsAndDeletesLabels) {
  EXPECT_EQ(silentCallOf({"label", "set", "201", "k", "Trunk"}), "set-label(201, k, Trunk)");
  EXPECT_EQ(silentCallOf({"label", "delete", "--", "-1", "k"}), "delete-label(-1, k)");
}

TEST_F(Console, SetsTheTestSwitch) {
  EXPECT_EQ(silentCallOf({"test-switch", "on"}), "test-switch(on)");
  EXPECT_EQ(silentCallOf({"test-switch", "off"}), "test-switch(off)");
}

TEST_F(Console, ReloadsTheModule) {
  EXPECT_EQ(silentCallOf({"module", "reload"}), "reload");
}

TEST_F(Console, PrintsTheNumberOfDeletedNodes) {
  EXPECT_EQ(run({"node", "delete", "core"}).out, "deletedNodes\n           3\n");
  EXPECT_EQ(run({"node", "delete", "core", "--format", "json"}).out, "{\"deletedNodes\":3}\n");
  EXPECT_EQ(run({"node", "delete", "core", "--format", "csv"}).out, "deletedNodes\r\n3\r\n");
  EXPECT_EQ(script.lastCall(), "delete(core)");
}

TEST_F(Console, ImportsALocalFile) {
  const std::string content("{\"bytes\":\"\0\xff\r\n\"}", 16);
  std::ofstream(path, std::ios::binary) << content;
  EXPECT_EQ(run({"import", path}).out,
            "topoNodes  networkElements  clockPositions  clockLinks  objectLabels\n"
            "        1                2               3           4    4294967295\n");
  EXPECT_EQ(run({"import", path, "--format", "json"}).out,
            "{\"topoNodes\":1,\"networkElements\":2,\"clockPositions\":3,\"clockLinks\":4,"
            "\"objectLabels\":4294967295}\n");
  EXPECT_EQ(run({"import", path, "--format", "csv"}).out,
            "topoNodes,networkElements,clockPositions,clockLinks,objectLabels\r\n"
            "1,2,3,4,4294967295\r\n");
  EXPECT_EQ(script.lastCall(), "import(" + path + ", " + content + ")");
}

TEST_F(Console, SendsTheOptionsOfAnImport) {
  std::ofstream(path, std::ios::binary) << "x";
  EXPECT_EQ(run({"import", path, "--dry-run", "--replace", "--first-element", "100"}).status, 0);
  EXPECT_EQ(script.lastCall(), "import(" + path + ", x, replace, dry-run, from 100)");
}

TEST_F(Console, EndsWith1WhenAFileCannotBeRead) {
  const auto errorOf = [this](const std::string& file) {
    const Ended ended = run({"import", file});
    EXPECT_EQ(ended.status, 1);
    return ended.err;
  };
  EXPECT_EQ(errorOf("/no/such/file"),
            "topoctl: the file '/no/such/file' cannot be read: No such file or directory\n");
  EXPECT_EQ(errorOf("/"), "topoctl: the file '/' cannot be read: Is a directory\n");
  EXPECT_THAT(script.calls(), ElementsAre());
}

TEST_F(Console, EndsWith4WhenAFileIsOverTheSizeLimit) {
  std::ofstream(path, std::ios::binary) << std::string(8193, 'x');
  const Ended ended = run({"import", path, "--max-message", "8192"});
  EXPECT_EQ(ended.status, 4);
  EXPECT_EQ(ended.err, "topoctl: the file '" + path +
                           "' is over the size limit: raise --max-message of topoctl (now 8192) "
                           "and of the agent\n");
  EXPECT_THAT(script.calls(), ElementsAre());
}

TEST_F(Console, EndsWith4WhenAFileWithItsHeaderIsOverTheSizeLimit) {
  if (!orb::kExactMessageLimit) {
    GTEST_SKIP() << "this ORB does not count every octet";
  }
  std::ofstream(path, std::ios::binary) << std::string(8192, 'x');
  const Ended ended = run({"import", path, "--max-message", "8192"});
  EXPECT_EQ(ended.status, 4);
  EXPECT_THAT(ended.err, HasSubstr("over the size limit"));
  EXPECT_THAT(script.calls(), ElementsAre());
}

TEST_F(Console, PrintsEverythingThatTheAgentKeepsOfAnObject) {
  const Ended table = run({"get", "NE=5"});
  EXPECT_EQ(table.status, 0) << table.err;
  EXPECT_EQ(script.lastCall(), "get(ManagedElement=5)");
  EXPECT_EQ(table.out,
            "name                             value\n"
            "name                             ManagedElement=5\n"
            "userLabel                        label\n"
            "owner                            owner\n"
            "additionalInfo.Region            north\n"
            "topoNodes.0.id                   NE=5\n"
            "topoNodes.0.attributes.location  Hall\n"
            "topoNodes.1.id                   5\n");
  EXPECT_EQ(run({"get", "--name", "EMS=E", "--name", "OS=1", "--format", "json"}).out,
            R"({"name":[{"name":"EMS","value":"E"},{"name":"OS","value":"1"}],"userLabel":"label",)"
            R"("owner":"owner","additionalInfo":[{"name":"Region","value":"north"}],"records":)"
            R"([{"list":"topoNodes","fields":{"id":"NE=5"},)"
            R"("attributes":[{"name":"location","value":"Hall"}]},)"
            R"({"list":"topoNodes","fields":{"id":"5"},"attributes":[]}]})"
            "\n");
  EXPECT_EQ(script.lastCall(), "get(EMS=E, OS=1)");
  EXPECT_THAT(run({"get", "TopoSubnetwork=a", "--format", "csv"}).out,
              StartsWith("name,value\r\nname,"));
}

TEST_F(Console, PrintsTheStatus) {
  const Ended table = run({"status"});
  EXPECT_THAT(table.out, HasSubstr("moduleState         MS_RELOADING\n"));
  EXPECT_THAT(table.out, HasSubstr("\n\nreceiver "));
  EXPECT_THAT(run({"status", "--format", "json"}).out, StartsWith("{\"agentVersion\":"));
  EXPECT_THAT(run({"status", "--format", "csv"}).out, StartsWith("name,value\r\nagentVersion,"));
}

TEST_F(Console, GivesAPartOfTheStatusToAClientWithoutPermission) {
  script.onConsole = [] { throw CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO); };
  const Ended table = run({"status"});
  EXPECT_EQ(table.status, 0) << table.err;
  EXPECT_THAT(table.out, HasSubstr("the console refuses this client (NO_PERMISSION)"));
  EXPECT_THAT(table.out, HasSubstr("\nviewNodes "));
  EXPECT_THAT(run({"status", "--format", "json"}).out, StartsWith("{\"missing\":\"the console"));
  EXPECT_THAT(run({"status", "--format", "csv"}).out, StartsWith("name,value\r\nmissing,"));
}

TEST_F(Console, GivesAPartOfTheStatusOfAnAgentWithoutConsole) {
  removeConsole();
  const Ended ended = run({"status", "--format", "json"});
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_THAT(ended.out, HasSubstr("the agent has no console"));
  EXPECT_THAT(ended.out, HasSubstr("\"viewNodes\":"));
}

TEST_F(Console, EndsWith3AndTheReasonOfTheAgent) {
  script.onConsole = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_ENTITY_NOT_FOUND, "no core");
  };
  std::ofstream(path, std::ios::binary) << "{}";
  for (const Words& words : std::vector<Words>{{"node", "create", "core", "--name", "Core"},
                                               {"node", "delete", "core"},
                                               {"node", "rename", "core", "Core"},
                                               {"import", path},
                                               {"test-switch", "on"},
                                               {"status"},
                                               {"module", "reload"}}) {
    const Ended ended = run(words);
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "topoctl: the agent refused: EXCPT_ENTITY_NOT_FOUND: no core\n");
  }
}

// As during a reload of the module, when the manager does not answer.
TEST_F(Console, IsFoundBesideAManagerThatDoesNotAnswer) {
  const CORBA::Object_var manager =
      server().get()->string_to_object(("corbaloc:iiop:1.2@" + address() + "/Nothing").c_str());
  const CORBA::String_var ior = server().get()->object_to_string(manager);
  for (const std::string& reference :
       {"corbaloc::" + address() + "/Nothing", std::string(ior.in())}) {
    const Ended ended = runAt(reference, {"module", "reload"});
    EXPECT_EQ(ended.status, 0) << ended.err;
  }
  EXPECT_THAT(script.calls(), ElementsAre("reload", "reload"));
}

TEST_F(Console, IsFoundBesideTheObjectOfACorbaname) {
  const PortableServer::Servant_var<support::FakeNaming> naming = new support::FakeNaming;
  naming->bound["TopoManagement"] =
      server().get()->string_to_object(("corbaloc::" + address() + "/Nothing").c_str());
  const auto service = server().wellKnownObject("NameService");
  const CORBA::Object_var reference = service->publish(naming.in());
  const Ended ended = runAt("corbaname::" + address() + "#TopoManagement", {"module", "reload"});
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_THAT(script.calls(), ElementsAre("reload"));
  service->retire();
}

// An agent with a low limit for incoming messages.
class StrictConsole : public Console {
 protected:
  static void SetUpTestSuite() {
    orb::Options small;
    small.maxMessageBytes = orb::kMinMaxMessageBytes;
    startServer(small);
  }
};

TEST_F(StrictConsole, EndsWith4WhenAFileIsOverTheAgentsLimit) {
  for (const std::size_t bytes : {8193, 8000000}) {
    std::ofstream(path, std::ios::binary) << std::string(bytes, 'x');
    const Ended ended = run({"import", path});
    EXPECT_EQ(ended.status, 4) << bytes;
    EXPECT_EQ(ended.err, "topoctl: the file '" + path +
                             "' is over the size limit: raise --max-message of topoctl (now "
                             "268435456) and of the agent\n")
        << bytes;
  }
  EXPECT_THAT(script.calls(), ElementsAre());
}

// A manager without a console beside it, as every host but topo-agentd serves it.
class NoConsole : public WithAgent {};

TEST_F(NoConsole, IsReportedByEveryOtherCommandThanStatus) {
  script.settle();
  const std::vector<std::vector<std::string>> commands = {
      {"test-switch", "on"}, {"module", "reload"}, {"node", "delete", "a"}};
  for (const std::vector<std::string>& command : commands) {
    std::vector<std::string> line = {"--agent", agentReference()};
    line.insert(line.end(), command.begin(), command.end());
    const Ended ended = runProgram(line);
    EXPECT_EQ(ended.status, 2) << command.front();
    EXPECT_EQ(ended.err, "topoctl: the agent at '" + agentReference() +
                             "' answers, but has no console: it was started with --no-console, or "
                             "it is another host than topo-agentd\n")
        << command.front();
  }
}

TEST_F(NoConsole, IsNotNeededByCommandsOfTheManager) {
  script.settle();
  EXPECT_EQ(runProgram({"--agent", agentReference(), "topo"}).status, 0);
}

TEST_F(NoConsole, EndsWith4WhenTheObjectHasAnotherType) {
  const auto other = server().wellKnownObject("TopoAgentConsole");
  const PortableServer::Servant_var<support::FakeNaming> naming = new support::FakeNaming;
  const CORBA::Object_var reference = other->publish(naming.in());
  const Ended ended = runProgram({"--agent", agentReference(), "status"});
  EXPECT_EQ(ended.status, 4);
  EXPECT_EQ(ended.err, "topoctl: the object 'TopoAgentConsole' beside that of the reference '" +
                           agentReference() + "' is not a Console_I\n");
  other->retire();
}

// ---- backup

TEST_F(Console, BackupWritesTheAgentsStoreToANewFile) {
  EXPECT_EQ(run({"backup", path}).out, "bytes\n    7\n");
  std::ifstream file(path);
  std::string content;
  std::getline(file, content);
  EXPECT_EQ(content, "one two");
  EXPECT_EQ(std::filesystem::status(path).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_THAT(script.calls(), ElementsAre("begin-backup()", "continue-backup(4711)",
                                          "continue-backup(4711)", "continue-backup(4711)"));
}

TEST_F(Console, ExportWritesTheNetworkToANewFile) {
  EXPECT_EQ(run({"export", path}).out, "bytes\n    7\n");
  EXPECT_EQ(std::filesystem::file_size(path), 7U);
  EXPECT_THAT(script.calls(), ElementsAre("begin-export()", "continue-backup(4712)",
                                          "continue-backup(4712)", "continue-backup(4712)"));
}

TEST_F(Console, RestoreReplacesTheNetworkByAFile) {
  std::ofstream(path) << "{}";
  EXPECT_EQ(run({"restore", path}).status, 0);
  EXPECT_THAT(script.calls(), ElementsAre("import(" + path + ", {}, replace)"));
}

TEST_F(Console, BackupKeepsAnExistingFile) {
  for (const std::string& existing : {path, path + ".part"}) {
    std::ofstream(existing) << "mine";
    const Ended ended = run({"backup", path});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.err, "topoctl: the file '" + existing + "' cannot be written: File exists\n");
    EXPECT_EQ(std::filesystem::file_size(existing), 4U);
    unlink(existing.c_str());
  }
  EXPECT_THAT(script.calls(), ElementsAre());
}

TEST_F(Console, BackupRejectsAFileThatCannotBeCreated) {
  const Ended ended = run({"backup", "/nowhere/backup.db"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.err,
            "topoctl: the file '/nowhere/backup.db.part' cannot be written: No such file or "
            "directory\n");
  EXPECT_THAT(script.calls(), ElementsAre());
}

TEST_F(Console, BackupCancelsAFailedTransferAndRemovesTheFile) {
  script.onConsole = [calls = 0]() mutable {
    if (++calls == 3) {
      throw CORBA::NO_RESOURCES();
    }
  };
  script.settle();
  EXPECT_NE(run({"backup", path}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(std::filesystem::exists(path + ".part"));
  EXPECT_EQ(script.lastCall(), "end-backup(4711)");
}

}  // namespace
}  // namespace topoctl
