// The agent's log, on standard error. One line a message: local time, level, thread, position,
// text.
//
// Thread-safety: any thread.

#ifndef AGENT_NORTHBOUND_LOG_H
#define AGENT_NORTHBOUND_LOG_H

#include <string>

namespace agent {

constexpr int kLogErrors = 1;
constexpr int kLogEvents = 2;  // what an operator wants to know about a healthy agent
constexpr int kLogTraces = 3;

// Messages above this level are dropped. At first only errors are let through.
void setLogLevel(int level);

// Logs a message of the agent's own.
void log(int level, const std::string& text);

}  // namespace agent

#endif
