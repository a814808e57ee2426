// Limits of the texts that clients and files give the agent. Pure functions; thread-safety: any
// thread.

#ifndef AGENT_BASE_TEXTCHECKS_H
#define AGENT_BASE_TEXTCHECKS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "agent/base/OperationResult.h"

namespace agent {

// The longest text that a change stores.
constexpr std::size_t kMostTextBytes = std::size_t{1} << 20;

// The offset of the first byte that is not UTF-8; empty for valid UTF-8.
std::optional<std::size_t> findInvalidUtf8(std::string_view text);

// The reason why a change cannot store a text, such as "is not UTF-8 at byte 3". Empty for a text
// that can be stored.
std::string problemWith(std::string_view text);

// kInvalidName with the reason "SUBJECT PROBLEM" for a text that a change cannot store.
Outcome checkText(const std::string& subject, std::string_view text);

}  // namespace agent

#endif
