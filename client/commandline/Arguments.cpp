#include "client/commandline/Arguments.h"

#include <CLI/CLI.hpp>

#include "client/base/Failure.h"
#include "client/commandline/ArgumentKind.h"

namespace topoctl {
namespace {

const ArgumentKind kNoArguments = {{}, nullptr, nullptr};

const ArgumentKind& kindOf(Takes takes) {
  switch (takes) {
    case Takes::kNothing:
      return kNoArguments;
    case Takes::kSubnetwork:
      return kSubnetworkArguments;
    case Takes::kAttribute:
      return kAttributeArguments;
    case Takes::kNewNode:
      return kNewNodeArguments;
    case Takes::kNode:
      return kNodeArguments;
    case Takes::kNewName:
      return kNewNameArguments;
    case Takes::kFile:
      return kFileArguments;
    case Takes::kNewFile:
      return kNewFileArguments;
    case Takes::kSwitch:
      return kSwitchArguments;
    case Takes::kWatch:
      return kWatchArguments;
  }
  return kNoArguments;
}

// Taken as they stand: the conversions of the library give a meaning to brackets.
Words wordsOf(const CLI::App& command, const ArgumentKind& kind) {
  Words words;
  for (const Place& place : kind.places) {
    const Words& typed = command.get_option(place.name)->results();
    words.insert(words.end(), typed.begin(), typed.end());
  }
  return words;
}

}  // namespace

void usageError(const std::string& text) {
  throw Failure(ExitCode::kUsage, text);
}

TypedPair splitPair(const std::string& where, const std::string& text, const char* form) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) {
    usageError(where + ": '" + text + "' is not " + form);
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

void addArguments(CLI::App& command, Takes takes) {
  const ArgumentKind& kind = kindOf(takes);
  // An argument is an option of its own, so that -- works anywhere among them.
  for (const Place& place : kind.places) {
    command.add_option(place.name, CLI::callback_t(), place.help);
  }
  if (kind.addOptions != nullptr) {
    kind.addOptions(command);
  }
}

Arguments readArguments(const CLI::App& command, Takes takes) {
  const ArgumentKind& kind = kindOf(takes);
  Arguments arguments;
  if (kind.read != nullptr) {
    kind.read(command, wordsOf(command, kind), arguments);
  }
  return arguments;
}

}  // namespace topoctl
