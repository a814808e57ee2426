// The rows of the commands that call the manager.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "client/commandline/CommandSyntax.h"

namespace topoctl {
namespace {

constexpr const char* kName = "--name";
constexpr const char* kUnique = "--unique";

void addWholeName(CLI::App& command) {
  command
      .add_option(kName, CLI::callback_t(),
                  "A pair of the whole name, sent as given; once for each pair, in order")
      ->type_name("NAME=VALUE")
      ->take_all();
}

void addAttributeOptions(CLI::App& command) {
  addWholeName(command);
  command.add_flag(kUnique, "Ask for a refusal when another object has this user label");
}

void readWholeName(const CLI::App& command, Arguments& arguments) {
  for (const std::string& text : command.get_option(kName)->results()) {
    arguments.object.push_back(splitPair(kName, text, "NAME=VALUE"));
  }
  arguments.isWholeName = !arguments.object.empty();
}

void readSubnetwork(const CLI::App& command, const Words& words, Arguments& arguments) {
  readWholeName(command, arguments);
  if (arguments.isWholeName && !words.empty()) {
    usageError("below: ID and --name exclude each other");
  }
  if (!arguments.isWholeName && words.empty()) {
    usageError("below: an ID is missing, or a whole name given with --name");
  }
  if (!arguments.isWholeName) {
    arguments.object = {{"TopoSubnetwork", nodeId(words.front())}};
  }
}

struct AttributeSyntax {
  const char* name;
  Attribute attribute;
  bool isPairs = false;      // set one pair at a time; otherwise a text
  bool mayBeUnique = false;  // among the objects of a kind
};

constexpr std::array<AttributeSyntax, 4> kAttributes = {{
    {"user-label", Attribute::kUserLabel, false, true},
    {"owner", Attribute::kOwner},
    {"native-name", Attribute::kNativeName},
    {"info", Attribute::kInfo, true},
}};

std::string listOfAttributes() {
  std::string names;
  for (const std::string& name : attributeNames()) {
    names += (names.empty() ? "" : ", ") + name;
  }
  return names;
}

const AttributeSyntax& attributeOf(const Words& words) {
  if (words.empty()) {
    usageError("set: an attribute is missing; the attributes are: " + listOfAttributes());
  }
  const auto* const found = std::find_if(
      kAttributes.begin(), kAttributes.end(),
      [&words](const AttributeSyntax& attribute) { return attribute.name == words.front(); });
  if (found == kAttributes.end()) {
    usageError("set: '" + words.front() +
               "' is not an attribute; the attributes are: " + listOfAttributes());
  }
  return *found;
}

void checkCount(const std::string& where, std::size_t count, bool isWholeName) {
  const std::size_t wanted = isWholeName ? 2 : 3;
  if (count > wanted) {
    usageError(where + ": OBJECT and --name exclude each other");
  }
  if (count + 1 < wanted) {
    usageError(where + ": OBJECT (or --name) and VALUE are missing");
  }
  if (count < wanted) {
    usageError(where +
               (isWholeName ? ": VALUE is missing" : ": OBJECT (or --name) or VALUE is missing"));
  }
}

void readValue(const std::string& where, const AttributeSyntax& attribute, const std::string& text,
               Arguments& arguments) {
  if (attribute.isPairs) {
    arguments.pair = splitPair(where + ": VALUE", text, "NAME=TEXT");
  } else {
    arguments.value = text;
  }
}

void readAttribute(const CLI::App& command, const Words& words, Arguments& arguments) {
  readWholeName(command, arguments);
  const AttributeSyntax& attribute = attributeOf(words);
  const std::string where = std::string("set ") + attribute.name;
  checkCount(where, words.size(), arguments.isWholeName);
  arguments.attribute = attribute.attribute;
  arguments.unique = command.count(kUnique) > 0;
  if (arguments.unique && !attribute.mayBeUnique) {
    usageError(where + ": --unique is for user-label alone");
  }
  if (!arguments.isWholeName) {
    arguments.object = {objectPair(splitPair(where + ": OBJECT", words[1], "CLASS=VALUE"))};
  }
  readValue(where, attribute, words.back(), arguments);
}

void readObject(const CLI::App& command, const Words& words, Arguments& arguments) {
  readWholeName(command, arguments);
  if (arguments.isWholeName && !words.empty()) {
    usageError("get: OBJECT and --name exclude each other");
  }
  if (!arguments.isWholeName && words.empty()) {
    usageError("get: an OBJECT is missing, or a whole name given with --name");
  }
  if (!arguments.isWholeName) {
    arguments.object = {objectPair(splitPair("get: OBJECT", words.front(), "CLASS=VALUE"))};
  }
}

void readShell(const CLI::App&, const Words& words, Arguments& arguments) {
  if (words.empty() || (words.front() != "bash" && words.front() != "zsh")) {
    usageError(words.empty() ? "completion: bash or zsh is missing"
                             : "completion: '" + words.front() + "' is neither bash nor zsh");
  }
  arguments.shell = words.front();
}

const char* const kWhyNoRecordsOfATree =
    "a tree is drawn for people; topo has the same nodes as records";

}  // namespace

std::vector<std::string> attributeNames() {
  std::vector<std::string> names;
  names.reserve(kAttributes.size());
  for (const AttributeSyntax& attribute : kAttributes) {
    names.emplace_back(attribute.name);
  }
  return names;
}

std::vector<CommandSyntax> managerSyntax() {
  const ArgumentSyntax noArguments;
  const ArgumentSyntax subnetwork = {
      {{"ID", "The subnetwork, as (TopoSubnetwork, ID) of the agent's own EMS",
        Values::kSubnetwork}},
      addWholeName,
      readSubnetwork};
  const ArgumentSyntax attribute = {
      {{"ATTRIBUTE", "user-label, owner, native-name or info", Values::kAttribute},
       {"OBJECT", "CLASS=VALUE, an object of the agent's own EMS; left out with --name",
        Values::kObject},
       {"VALUE", "What to set; NAME=TEXT for info, where an empty TEXT removes"}},
      addAttributeOptions,
      readAttribute};
  const ArgumentSyntax object = {
      {{"OBJECT", "CLASS=VALUE, an object of the agent's own EMS; left out with --name",
        Values::kObject}},
      addWholeName,
      readObject};
  return {
      {"topo", "The topology subnetwork view: its nodes", noArguments},
      {"protect", "The protect subnetwork view: its nodes", noArguments},
      {"below", "The nodes below a topology subnetwork", subnetwork, Formats::kAll, nullptr,
       "ID | --name NAME=VALUE..."},
      {"clocks", "The clock source view: its nodes", noArguments},
      {"clock-links", "The clock source view: its topological links", noArguments},
      {"tree", "The topology subnetwork view as a tree by parents", noArguments, Formats::kTable,
       kWhyNoRecordsOfATree},
      {"set", "Sets an attribute of an object: user-label, owner, native-name or info", attribute,
       Formats::kAll, nullptr,
       "ATTRIBUTE OBJECT VALUE [--unique], with --name NAME=VALUE... in place of OBJECT"},
      {"get", "Everything that the agent keeps of an object", object, Formats::kAll, nullptr,
       "OBJECT | --name NAME=VALUE..."},
      {"completion",
       "Prints a script for the shell that completes words of topoctl",
       {{{"SHELL", "bash or zsh", Values::kShell}}, nullptr, readShell},
       Formats::kTable,
       "a script has no records"},
      {"capabilities", "The operations that the agent's manager supports", noArguments},
  };
}

}  // namespace topoctl
