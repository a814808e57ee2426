// The journal of systemd.

#ifndef AGENT_PROCESS_JOURNAL_H
#define AGENT_PROCESS_JOURNAL_H

#include <string>
#include <string_view>

namespace agent {

// Sends a line to the journal, with the priority "notice" and the identifier topo-agentd. Returns
// the reason of a failure, "" after a success. May block while the journal is busy. Thread-safety:
// any thread.
std::string sendToJournal(std::string_view line);

}  // namespace agent

#endif
