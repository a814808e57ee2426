#include "client/Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>

#include "client/Attributes.h"
#include "client/Failure.h"

namespace topoctl {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kName = "--name";
constexpr const char* kUnique = "--unique";

[[noreturn]] void usageError(const std::string& text) {
  throw Failure(ExitCode::kUsage, text);
}

// Names without dashes. An argument is an option of its own, so that -- works anywhere among them.
const Words& placesOf(Takes takes) {
  static const Words none;
  static const Words subnetwork = {"ID"};
  static const Words attribute = {"ATTRIBUTE", "OBJECT", "VALUE"};
  switch (takes) {
    case Takes::kNothing:
      return none;
    case Takes::kSubnetwork:
      return subnetwork;
    case Takes::kAttribute:
      return attribute;
  }
  return none;
}

const char* describe(const std::string& place) {
  if (place == "ID") {
    return "The subnetwork, as (TopoSubnetwork, ID) of the agent's own EMS";
  }
  if (place == "OBJECT") {
    return "CLASS=VALUE, an object of the agent's own EMS; left out with --name";
  }
  return place == "VALUE" ? "What to set; NAME=TEXT for info, where an empty TEXT removes"
                          : "user-label, owner, native-name or info";
}

// Taken as they stand: the conversions of the library give a meaning to brackets.
Words wordsOf(const CLI::App& command, Takes takes) {
  Words words;
  for (const std::string& place : placesOf(takes)) {
    const Words& typed = command.get_option(place)->results();
    words.insert(words.end(), typed.begin(), typed.end());
  }
  return words;
}

// Split at the first '='.
TypedPair splitPair(const std::string& where, const std::string& text, const char* form) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) {
    usageError(where + ": '" + text + "' is not " + form);
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

void readWholeName(const CLI::App& command, Arguments& arguments) {
  for (const std::string& text : command.get_option(kName)->results()) {
    arguments.object.push_back(splitPair(kName, text, "NAME=VALUE"));
  }
  arguments.isWholeName = !arguments.object.empty();
}

void readSubnetwork(const Words& words, Arguments& arguments) {
  if (arguments.isWholeName && !words.empty()) {
    usageError("below: ID and --name exclude each other");
  }
  if (!arguments.isWholeName && words.empty()) {
    usageError("below: an ID is missing, or a whole name given with --name");
  }
  if (!arguments.isWholeName) {
    arguments.object = {{"TopoSubnetwork", words.front()}};
  }
}

std::string attributeNames() {
  std::string names;
  for (const Attribute& attribute : attributes()) {
    names += (names.empty() ? "" : ", ") + std::string(attribute.name);
  }
  return names;
}

const Attribute& attributeOf(const Words& words) {
  if (words.empty()) {
    usageError("set: an attribute is missing; the attributes are: " + attributeNames());
  }
  const auto found = std::find_if(
      attributes().begin(), attributes().end(),
      [&words](const Attribute& attribute) { return attribute.name == words.front(); });
  if (found == attributes().end()) {
    usageError("set: '" + words.front() +
               "' is not an attribute; the attributes are: " + attributeNames());
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

void readValue(const std::string& where, const Attribute& attribute, const std::string& text,
               Arguments& arguments) {
  if (attribute.isPairs) {
    arguments.pair = splitPair(where + ": VALUE", text, "NAME=TEXT");
  } else {
    arguments.value = text;
  }
}

void readAttribute(const CLI::App& command, const Words& words, Arguments& arguments) {
  const Attribute& attribute = attributeOf(words);
  const std::string where = std::string("set ") + attribute.name;
  checkCount(where, words.size(), arguments.isWholeName);
  arguments.attribute = attribute.name;
  arguments.unique = command.count(kUnique) > 0;
  if (arguments.unique && !attribute.mayBeUnique) {
    usageError(where + ": --unique is for user-label alone");
  }
  if (!arguments.isWholeName) {
    arguments.object = {splitPair(where + ": OBJECT", words[1], "CLASS=VALUE")};
  }
  readValue(where, attribute, words.back(), arguments);
}

}  // namespace

void addArguments(CLI::App& command, Takes takes) {
  for (const std::string& place : placesOf(takes)) {
    command.add_option(place, CLI::callback_t(), describe(place));
  }
  if (takes != Takes::kNothing) {
    command
        .add_option(kName, CLI::callback_t(),
                    "A pair of the whole name, sent as given; once for each pair, in order")
        ->type_name("NAME=VALUE")
        ->take_all();
  }
  if (takes == Takes::kAttribute) {
    command.add_flag(kUnique, "Ask for a refusal when another object has this user label");
  }
}

Arguments readArguments(const CLI::App& command, Takes takes) {
  Arguments arguments;
  if (takes == Takes::kNothing) {
    return arguments;
  }
  const Words words = wordsOf(command, takes);
  readWholeName(command, arguments);
  if (takes == Takes::kSubnetwork) {
    readSubnetwork(words, arguments);
  } else {
    readAttribute(command, words, arguments);
  }
  return arguments;
}

}  // namespace topoctl
