// The agent's log, on standard error. One line a message: local time, level, thread, position,
// text. In the text every control character, line separator, invisible character and byte that is
// not UTF-8 is \xNN, and a backslash is doubled; a long text is cut.
//
// Thread-safety: any thread.

#ifndef AGENT_BASE_LOG_H
#define AGENT_BASE_LOG_H

#include <chrono>
#include <string>
#include <string_view>

namespace agent {

constexpr int kLogErrors = 1;
constexpr int kLogEvents = 2;  // what an operator wants to know about a healthy agent
constexpr int kLogTraces = 3;

// Messages above this level are dropped. At first only errors are let through.
void setLogLevel(int level);

// Whether messages of a level are written at present.
bool isLogged(int level);

// Logs a message of the agent, at the position topo-agentd:0.
void log(int level, const std::string& text);

// Logs a message at a position of its own.
void logAt(int level, const std::string& file, int line, std::string_view text);

// From here to the end of the process a thread of its own writes the log, so that no thread that
// logs waits for whoever reads standard error. At most 1,000 lines wait for that thread; then the
// oldest line is dropped for each new one, and a line in the log says how many were. Call once,
// before other threads log. Until then each message is written by the thread that logs it.
void logInBackground();

// Waits until every message logged before is written; false when that takes too long.
bool flushLog(std::chrono::milliseconds patience);

}  // namespace agent

#endif
