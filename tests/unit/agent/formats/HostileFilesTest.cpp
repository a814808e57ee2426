// Unreadable files, and files that attack their reader.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <random>

#include "agent/formats/NetworkReader.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/Unprivileged.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  for (std::size_t i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

std::string refusalOfFile(const std::filesystem::path& file) {
  return agent::readNetworkFile(file).outcome().reason;
}

TEST(NetworkReader, RejectsAMissingFile) {
  const support::TemporaryDirectory directory;
  EXPECT_EQ(directory.file("none.json") + ": file: No such file or directory",
            refusalOfFile(directory.file("none.json")));
}

TEST(NetworkReader, RejectsADirectory) {
  const support::TemporaryDirectory directory;
  EXPECT_EQ(directory.path().string() + ": file: Is a directory", refusalOfFile(directory.path()));
}

TEST(NetworkReader, RejectsADeviceAndAPipe) {
  const support::TemporaryDirectory directory;
  ASSERT_EQ(0, mkfifo(directory.file("pipe").c_str(), 0600));
  EXPECT_EQ(directory.file("pipe") + ": file: is not a regular file",
            refusalOfFile(directory.file("pipe")));
  EXPECT_EQ("/dev/zero: file: is not a regular file", refusalOfFile("/dev/zero"));
}

TEST(NetworkReader, RejectsAFileWithoutPermission) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("secret.json", "{}");
  ASSERT_EQ(0, chmod(file.c_str(), 0));
  const Unprivileged unprivileged(directory.path());
  if (!unprivileged.isInForce()) {
    GTEST_SKIP() << "cannot give up the privileges of root here";
  }
  EXPECT_EQ(file + ": file: Permission denied", refusalOfFile(file));
}

TEST(NetworkReader, RejectsAFileWithAReadError) {
  EXPECT_EQ("/proc/self/mem: file: Input/output error", refusalOfFile("/proc/self/mem"));
}

TEST(NetworkReader, RejectsAnEmptyFile) {
  EXPECT_EQ("network.json: file: is empty", refusalOf(""));
  EXPECT_EQ("network.json: file: is empty", refusalOf(" \n\t\r\n"));
  EXPECT_EQ("network.json: file: is empty", refusalOf("\xef\xbb\xbf"));
}

TEST(NetworkReader, RejectsInvalidUtf8) {
  EXPECT_EQ("network.json: 2:8: is not UTF-8 here", refusalOf("{\n\"ems\":\"\xff\"}"));
  EXPECT_EQ("network.json: 1:2: is not UTF-8 here", refusalOf("<\xc0\x80/>"));
  EXPECT_EQ("network.json: 1:1: is not UTF-8 here", refusalOf(std::string("\xff\xfe{\0", 4)));
}

TEST(NetworkReader, RejectsANulByte) {
  EXPECT_EQ("network.json: 1:9: contains a NUL character",
            refusalOf(std::string("{\"ems\":\"\0\"}", 11)));
  EXPECT_EQ("network.json: 1:2: contains a NUL character", refusalOf(std::string("<\0/>", 4)));
}

TEST(NetworkReader, EscapesTheNameOfTheFile) {
  EXPECT_EQ("a\\x0ab: file: is empty", refusalOf("", "a\nb"));
}

TEST(NetworkReader, RejectsVeryDeepNestingOfLists) {
  EXPECT_EQ("network.json: topoNodes[0]: is nested too deeply",
            refusalOf(withFormat("\"topoNodes\":" + repeated("[", 1000000))));
  EXPECT_EQ("network.json: ems: is nested too deeply",
            refusalOf(withFormat("\"ems\":" + repeated("[", 1000000))));
  EXPECT_EQ("network.json: top level: must be an object, not a list",
            refusalOf(repeated("[", 1000000)));
}

TEST(NetworkReader, RejectsVeryDeepNestingOfObjects) {
  EXPECT_EQ("network.json: topoNodes[0]: is nested too deeply",
            refusalOf(withFormat("\"topoNodes\":[" + repeated("{\"id\":", 1000000))));
}

TEST(NetworkReader, SurvivesVeryDeepNestingOfElements) {
  const std::string deep =
      "<graphml><graph>" + repeated("<a>", 1000000) + repeated("</a>", 1000000);
  EXPECT_EQ("", refusalOf(deep + "</graph></graphml>", "deep"));
  EXPECT_EQ("deep: 1:7000016: Start-end tags mismatch", refusalOf(deep, "deep"));
}

TEST(NetworkReader, SurvivesAVeryLongChainOfParents) {
  std::string nodes = R"({"id":"0n"})";
  for (int i = 1; i < 100000; ++i) {
    nodes +=
        ",{\"id\":\"" + std::to_string(i) + "n\",\"parent\":\"" + std::to_string(i - 1) + "n\"}";
  }
  EXPECT_EQ(100000U, readText(withFormat("\"topoNodes\":[" + nodes + "]")).topoNodes.size());
}

TEST(NetworkReader, CutsLongTextsInReasons) {
  const std::string refusal =
      refusalOf(withFormat("\"topoNodes\":[{\"id\":\"a\",\"parent\":\"" + longText('x') + "\"}]"));
  EXPECT_EQ("network.json: topoNodes[0].parent: \"" + std::string(80, 'x') + "...\" does not exist",
            refusal);
}

TEST(NetworkReader, RejectsVeryLongNumbers) {
  EXPECT_EQ(
      "network.json: topoNodes[0].type: must be a whole number from 0 to 4294967295, not 1e+300",
      refusalOf(
          withFormat("\"topoNodes\":[{\"id\":\"a\",\"type\":1" + std::string(300, '0') + "}]")));
  const std::string refusal =
      refusalOf(withFormat("\"topoNodes\":[{\"type\":" + std::string(1000000, '9') + "}]"));
  EXPECT_EQ("network.json: 1:1000048: number overflow parsing '999", refusal.substr(0, 53));
  EXPECT_LT(refusal.size(), 600U);
}

// Every prefix of a file is rejected in one line, or is complete.
void expectOneLineForEveryPrefix(const std::string& content) {
  for (std::size_t length = 0; length < content.size(); ++length) {
    const std::string refusal = refusalOf(content.substr(0, length));
    EXPECT_NE("", refusal) << length;
    EXPECT_EQ(std::string::npos, refusal.find('\n')) << length;
  }
  EXPECT_EQ("", refusalOf(content));
}

TEST(NetworkReader, RejectsEveryTruncationOfAFile) {
  expectOneLineForEveryPrefix(
      R"({"format":"topo-network/1","topoNodes":[{"id":"é","params":[1,-2]}],"ems":"\u00e9"})");
  expectOneLineForEveryPrefix(
      R"(<?xml version="1.0"?><graphml><key id="l" for="node" attr.name="label"/><graph>)"
      R"(<node id="0"><data key="l">&#xE9;<![CDATA[é]]></data></node><!-- x --></graph>)"
      "</graphml>");
}

// Random damage leads to a rejection in one line at worst.
void expectNoHarmFromDamage(const std::string& content) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 2000; ++round) {
    std::string damaged = content;
    for (int i = 0; i < 3; ++i) {
      damaged[random() % damaged.size()] = static_cast<char>(random() % 256);
    }
    const std::string refusal = refusalOf(damaged);
    EXPECT_EQ(refusal.end(), std::find_if(refusal.begin(), refusal.end(), [](char character) {
                return static_cast<unsigned char>(character) < 0x20;
              }));
  }
}

TEST(NetworkReader, SurvivesDamagedFiles) {
  expectNoHarmFromDamage(
      R"({"format":"topo-network/1","topoNodes":[{"id":"é","params":[1,-2]}],"ems":"\u00e9"})");
  expectNoHarmFromDamage(
      R"(<?xml version="1.0"?><graphml><key id="l" for="node" attr.name="label"/><graph>)"
      R"(<node id="0"><data key="l">&#xE9;<![CDATA[é]]></data></node><!-- x --></graph>)"
      "</graphml>");
}

}  // namespace
