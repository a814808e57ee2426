// Log lines about single requests of clients, for operators.

#ifndef AGENT_BASE_REQUESTLOG_H
#define AGENT_BASE_REQUESTLOG_H

#include <string>
#include <string_view>

namespace agent {

// The functions make a line only if its level is logged, and drop the line when memory is short.
// peer: the address of the client, or "" for a call of this process. Thread-safety: any thread.

// Logs "PEER: OPERATION SUBJECT" at kLogEvents, after a change.
void logChange(std::string_view peer, std::string_view operation,
               std::string_view subject) noexcept;

// Logs "PEER: OPERATION is refused: REASON" at kLogTraces.
void logRefusal(std::string_view peer, std::string_view operation,
                std::string_view reason) noexcept;

}  // namespace agent

#endif
