// The agent's log, on standard error. Every message is one line: local time, level, thread,
// position, text. The text is cut after 3,000 bytes and escaped as by escaped() in PrintableText.h.
//
// Thread-safety: any thread. Ownership: the logger lives until the process ends. Errors:
// std::bad_alloc; a failed write drops the message.

#ifndef AGENT_BASE_LOG_H
#define AGENT_BASE_LOG_H

#include <chrono>
#include <string>
#include <string_view>

namespace agent {

constexpr int kLogErrors = 1;
constexpr int kLogEvents = 2;  // events of a healthy agent, for operators
constexpr int kLogTraces = 3;

// Messages above this level are dropped. The initial level is kLogErrors.
void setLogLevel(int level);

// True if messages of this level are written.
bool isLogged(int level);

// Logs at the position topo-agentd:0.
void log(int level, const std::string& text);

// Logs at the position FILE:LINE.
void logAt(int level, const std::string& file, int line, std::string_view text);

// Starts a thread that writes the log until the process ends, so that no other thread blocks on
// standard error. Before the call, each thread writes its own messages. The queue holds 1,000
// lines; a full queue evicts its oldest lines, and the log reports their number. REQUIRES: called
// once, before other threads log.
void logInBackground();

// Waits until every message logged before is written. Returns false after the timeout.
bool flushLog(std::chrono::milliseconds patience);

}  // namespace agent

#endif
