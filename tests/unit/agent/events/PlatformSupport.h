// Replaces the log of the agent in these tests.

#ifndef TESTS_UNIT_AGENT_EVENTS_PLATFORMSUPPORT_H
#define TESTS_UNIT_AGENT_EVENTS_PLATFORMSUPPORT_H

#include <string>
#include <vector>

// The messages that any thread logged since the last call: "LEVEL TEXT".
std::vector<std::string> takeLogLines();

#endif
