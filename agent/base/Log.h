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
constexpr int kLogEvents = 2;  // events of a healthy agent, for operators
constexpr int kLogTraces = 3;

// Messages above this level are dropped. The initial level is kLogErrors.
void setLogLevel(int level);

// Whether messages of a level are written at present.
bool isLogged(int level);

// Logs a message of the agent, at the position topo-agentd:0.
void log(int level, const std::string& text);

// Logs a message at a position of its own.
void logAt(int level, const std::string& file, int line, std::string_view text);

// Starts a thread that writes the log until the end of the process, so that no other thread waits
// for the reader of standard error. Before the call, each thread writes its own messages. The queue
// holds 1,000 lines; a full queue drops its oldest lines and logs their number. Call once, before
// other threads log.
void logInBackground();

// Waits until every message logged before is written. Returns false after the timeout.
bool flushLog(std::chrono::milliseconds patience);

}  // namespace agent

#endif
