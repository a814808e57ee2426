// Records log lines in place of the agent's log.

#ifndef TESTS_UNIT_AGENT_EVENTS_PLATFORMSUPPORT_H
#define TESTS_UNIT_AGENT_EVENTS_PLATFORMSUPPORT_H

#include <ostream>
#include <string>
#include <vector>

struct LogLine {
  int level;
  std::string text;
};
inline bool operator==(const LogLine& left, const LogLine& right) {
  return left.level == right.level && left.text == right.text;
}
inline void PrintTo(const LogLine& line, std::ostream* out) {
  *out << "level " << line.level << ": " << line.text;
}

// Returns and forgets the lines that all threads have logged since the last call. Any thread.
std::vector<LogLine> takeLogLines();

#endif
