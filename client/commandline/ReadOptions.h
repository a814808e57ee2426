// Helpers of the files with the rows of commandSyntax() that read options. Errors: Failure
// (kUsage). Thread-safety: any thread.

#ifndef CLIENT_COMMANDLINE_READOPTIONS_H
#define CLIENT_COMMANDLINE_READOPTIONS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "client/commandline/Arguments.h"
#include "client/commandline/CommandSyntax.h"

namespace topoctl {

// Declares an option with one text, of which the last occurrence counts.
void addText(CLI::App& command, const char* option, const char* type, const char* help);

// Declares an option with a pair NAME=VALUE, which may occur several times.
void addPairs(CLI::App& command, const char* option, const char* help);

// The last typed value of an option; empty if the option was not typed.
std::optional<std::string> lastTyped(const CLI::App& command, const char* option);

// Returns `otherwise` if the option was not typed.
NodeKind readKind(const CLI::App& command, const char* option, NodeKind otherwise);

// Two numbers as A,B; empty without the option.
std::optional<TypedNumbers> readNumbers(const CLI::App& command, const char* option);

std::vector<TypedPair> readPairs(const CLI::App& command, const char* option);

// Fails with "COMMAND: WHAT_IS_MISSING" for fewer words than `count`.
void requireWords(const char* command, const Words& words, std::size_t count,
                  const char* whatIsMissing);

}  // namespace topoctl

#endif
