// Compares the reader of the native network format with an oracle that checks whole JSON values:
// the networks of valid files, and the reason of every rejection.

#include <string>
#include <vector>

#include "agent/formats/JsonNetwork.h"
#include "agent/formats/ParseError.h"
#include "tests/property/PlainJsonNetwork.h"
#include "tests/property/Random.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using Texts = std::vector<std::string>;

const std::string& anyOf(const Texts& texts, Random& random) {
  return texts[static_cast<std::size_t>(random.number(0, static_cast<int>(texts.size()) - 1))];
}

bool oneIn(int cases, Random& random) {
  return random.number(1, cases) == 1;
}

// A field of the format with valid values.
struct Field {
  std::string name;
  Texts values;
};

struct List {
  std::string name;
  std::vector<Field> fields;
};

const Texts kTextValues = {R"("")", R"("a")", R"("\u00e9\n\"")",
                           R"("a text of many bytes, no two")"};
const Texts kFlags = {"true", "false"};
const Texts kNumbers = {"0", "-0", "1", "-1", "2147483647", "-2147483648"};
const Texts kNaturals = {"0", "1", "2", "4294967295"};
const Texts kNumberPairs = {"[0,0]", "[1,-1]", "[ 2147483647 , -2147483648 ]"};
const Texts kTextPairs = {"[]", R"([["a","b"]])", R"([["",""],["a","b"],["c","d"]])"};

const std::vector<List>& lists() {
  static const std::vector<List> all = {
      {"topoNodes",
       {{"id", {R"("a")", R"("NE=5")"}},
        {"parent", kTextValues},
        {"name", kTextValues},
        {"type", kNaturals},
        {"parentType", kNaturals},
        {"params", kNumberPairs},
        {"attributes", kTextPairs}}},
      {"networkElements",
       {{"number", kNumbers}, {"name", kTextValues}, {"shown", kFlags}, {"shownForNode", kFlags}}},
      {"clockPositions",
       {{"reference", kTextValues}, {"label", kTextValues}, {"values", kNumberPairs}}},
      {"clockLinks",
       {{"id", kTextValues}, {"name", kTextValues}, {"a", kTextValues}, {"z", kTextValues}}},
      {"objectLabels", {{"type", kNumbers}, {"id", kTextValues}, {"label", kTextValues}}},
      {"objectAttributes",
       {{"type", kNumbers}, {"id", kTextValues}, {"owner", kTextValues}, {"info", kTextPairs}}},
  };
  return all;
}

// Values that most fields refuse.
const Texts kStrayValues = {"null",
                            "true",
                            "\"\"",
                            R"("x\u0000y")",
                            "0",
                            "-1",
                            "1.5",
                            "1e2",
                            "1e999",
                            "2147483648",
                            "-2147483649",
                            "4294967296",
                            "18446744073709551615",
                            "100000000000000000000",
                            "[]",
                            "{}",
                            "[1]",
                            "[1,2]",
                            "[1,2,3]",
                            R"(["a","b"])",
                            R"([1,"b"])",
                            R"(["a",[]])",
                            "[[1,2]]",
                            "[[],{}]",
                            R"([["a"],["a",1]])",
                            R"([["a",1],["a"]])",
                            R"([["a","b"],["a",{}],5])",
                            R"([1,2,{"a":1,"a":2}])",
                            R"({"b":1,"a":{"c":[{}]}})",
                            R"({"a":1,"a":2})",
                            "[[[[[[[]]]]]]]",
                            "[[[[[[[[1]]]]]]]]",
                            R"({"a":{"a":{"a":{"a":{"a":{"a":{}}}}}}})",
                            "x",
                            "[,]",
                            "\"\\ud800\""};

const Texts kStrayNames = {"zz", "aa", "id", "", "parents", "a\\u0000b"};

std::string member(const std::string& name, const std::string& value) {
  return '"' + name + "\":" + value;
}

std::string joined(const Texts& texts) {
  std::string result;
  for (const std::string& text : texts) {
    result += (result.empty() ? "" : ",") + text;
  }
  return result;
}

// An object with some of the fields of an entry, mostly with the required ones, in random order.
std::string randomEntry(const List& list, Random& random) {
  if (oneIn(60, random)) {
    return anyOf(kStrayValues, random);
  }
  Texts members;
  for (const Field& field : list.fields) {
    if (oneIn(5, random)) {
      continue;
    }
    const bool stray = oneIn(25, random);
    const auto place = random.number(0, static_cast<int>(members.size()));
    members.insert(members.begin() + (oneIn(3, random) ? place : static_cast<int>(members.size())),
                   member(field.name, anyOf(stray ? kStrayValues : field.values, random)));
  }
  while (oneIn(25, random)) {
    members.push_back(member(anyOf(kStrayNames, random), anyOf(kStrayValues, random)));
  }
  return '{' + joined(members) + '}';
}

std::string randomList(const List& list, Random& random) {
  if (oneIn(40, random)) {
    return anyOf(kStrayValues, random);
  }
  Texts entries;
  for (int left = random.number(0, 3); left > 0; --left) {
    entries.push_back(randomEntry(list, random));
  }
  return '[' + joined(entries) + ']';
}

std::string randomFile(Random& random) {
  Texts members;
  if (!oneIn(20, random)) {
    members.push_back(
        member("format", oneIn(20, random) ? anyOf(kStrayValues, random) : "\"topo-network/1\""));
  }
  if (oneIn(3, random)) {
    members.push_back(member("ems", anyOf(oneIn(5, random) ? kStrayValues : kTextValues, random)));
  }
  for (const List& list : lists()) {
    if (oneIn(2, random)) {
      members.push_back(member(list.name, randomList(list, random)));
    }
  }
  if (oneIn(40, random)) {
    members.push_back(member(anyOf(kStrayNames, random), anyOf(kStrayValues, random)));
  }
  return oneIn(100, random) ? anyOf(kStrayValues, random) : '{' + joined(members) + '}';
}

// Removes, repeats or replaces some bytes.
std::string damaged(std::string file, Random& random) {
  const auto at = static_cast<std::size_t>(random.number(0, static_cast<int>(file.size())));
  const auto count = static_cast<std::size_t>(random.number(0, 8));
  const std::string cut = file.substr(at, count);
  switch (random.number(0, 2)) {
    case 0:
      return file.erase(at, count);
    case 1:
      return file.insert(at, cut);
    default:
      return file.replace(at, cut.size(), anyOf(kStrayValues, random));
  }
}

// The network of a file, or the reason of its rejection.
struct Answer {
  agent::Network network;
  std::string refusal;
};

template <typename Read>
Answer answerOf(Read read) {
  try {
    return {read(), ""};
  } catch (const agent::ParseError& error) {
    return {{}, error.what()};
  }
}

TEST(JsonNetworkProperty, ReadsAndRejectsFilesLikeAReaderOfWholeValues) {
  Random random;
  int accepted = 0;
  constexpr int kRounds = 10000;
  for (int round = 0; round < kRounds; ++round) {
    std::string file = randomFile(random);
    if (oneIn(4, random)) {
      file = damaged(std::move(file), random);
    }
    const Answer expected = answerOf([&] { return plain::readJsonNetwork(file); });
    const Answer actual =
        answerOf([&] { return agent::readJsonNetwork(file, agent::Cancellation::none()); });
    ASSERT_EQ(expected.refusal, actual.refusal) << file;
    ASSERT_EQ(expected.network, actual.network) << file;
    accepted += expected.refusal.empty() ? 1 : 0;
  }
  EXPECT_LT(kRounds / 10, accepted);
  EXPECT_GT(kRounds * 9 / 10, accepted);
}

}  // namespace
