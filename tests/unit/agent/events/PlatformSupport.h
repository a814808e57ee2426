// What the agent's other folders provide, as far as event handling uses it.

#ifndef TESTS_UNIT_AGENT_EVENTS_PLATFORMSUPPORT_H
#define TESTS_UNIT_AGENT_EVENTS_PLATFORMSUPPORT_H

#include <string>
#include <vector>

// What was logged since the last call, by any thread: "LEVEL FILE:LINE TEXT".
std::vector<std::string> takeLogLines();

#endif
