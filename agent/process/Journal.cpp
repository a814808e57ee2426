#include "agent/process/Journal.h"

// Without the macro, sd-journal.h adds the line of the call to each message.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <sys/uio.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace agent {
namespace {

iovec fieldOf(std::string& text) {
  return {text.data(), text.size()};
}

}  // namespace

std::string sendToJournal(std::string_view line) {
  // The library reports success when there is no journal.
  if (::access("/run/systemd/journal/socket", W_OK) != 0) {
    return "the journal does not run: " + std::generic_category().message(errno);
  }
  std::string message = "MESSAGE=" + std::string(line);
  std::string priority = "PRIORITY=5";
  std::string identifier = "SYSLOG_IDENTIFIER=topo-agentd";
  const iovec fields[] = {fieldOf(message), fieldOf(priority), fieldOf(identifier)};
  const int result = sd_journal_sendv(fields, 3);
  return result < 0 ? "the journal: " + std::generic_category().message(-result) : "";
}

}  // namespace agent
