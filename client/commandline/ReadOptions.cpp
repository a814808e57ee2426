#include "client/commandline/ReadOptions.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string_view>

#include "client/base/Decimal.h"

namespace topoctl {

void addText(CLI::App& command, const char* option, const char* type, const char* help) {
  command.add_option(option, CLI::callback_t(), help)->type_name(type)->take_last();
}

void addPairs(CLI::App& command, const char* option, const char* help) {
  command.add_option(option, CLI::callback_t(), help)->type_name("NAME=VALUE")->take_all();
}

std::optional<std::string> lastTyped(const CLI::App& command, const char* option) {
  const Words& typed = command.get_option(option)->results();
  return typed.empty() ? std::nullopt : std::optional(typed.back());
}

NodeKind readKind(const CLI::App& command, const char* option, NodeKind otherwise) {
  const auto typed = lastTyped(command, option);
  if (!typed) {
    return otherwise;
  }
  if (*typed != "subnetwork" && *typed != "element") {
    usageError(std::string(option) + ": '" + *typed + "' is neither subnetwork nor element");
  }
  return *typed == "element" ? NodeKind::kElement : NodeKind::kSubnetwork;
}

std::optional<TypedNumbers> readNumbers(const CLI::App& command, const char* option) {
  const auto typed = lastTyped(command, option);
  if (!typed) {
    return std::nullopt;
  }
  const std::string_view all = *typed;
  const std::size_t comma = all.find(',');
  const bool hasComma = comma != std::string_view::npos;
  const auto first = parseDecimal<std::int32_t>(all.substr(0, comma));
  const auto second = parseDecimal<std::int32_t>(hasComma ? all.substr(comma + 1) : "");
  if (!first || !second) {
    usageError(std::string(option) + ": '" + *typed +
               "' is not A,B, two numbers from -2147483648 to 2147483647");
  }
  return TypedNumbers{*first, *second};
}

std::vector<TypedPair> readPairs(const CLI::App& command, const char* option) {
  std::vector<TypedPair> pairs;
  for (const std::string& text : command.get_option(option)->results()) {
    pairs.push_back(splitPair(option, text, "NAME=VALUE"));
  }
  return pairs;
}

void requireWords(const char* command, const Words& words, std::size_t count,
                  const char* whatIsMissing) {
  if (words.size() < count) {
    usageError(std::string(command) + ": " + whatIsMissing);
  }
}

}  // namespace topoctl
