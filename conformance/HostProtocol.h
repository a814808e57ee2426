// The texts that a host exchanges with topo-conformance: see docs/conformance.md. Pure functions;
// thread-safety: any thread.

#ifndef CONFORMANCE_HOSTPROTOCOL_H
#define CONFORMANCE_HOSTPROTOCOL_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "conformance/shared/Verdict.h"

namespace conformance {

// The manager's reference in the line that a host prints when it serves: "ready REFERENCE", or a
// line with ", reference REFERENCE," as topo-agentd prints. Empty for any other line.
std::optional<std::string> referenceInReadyLine(const std::string& line);

// The answer to a request.
struct Answer {
  bool isOk = false;
  std::string text;  // after "ok" a reference or ""; after "failed" the reason
};

// Empty for a line that is no answer.
std::optional<Answer> parseAnswer(const std::string& line);

// The texts with every occurrence of the placeholder replaced by the value.
std::vector<std::string> expand(const std::vector<std::string>& texts,
                                const std::string& placeholder, const std::string& value);

constexpr const char* kModulePlaceholder = "{module}";      // the path of the module
constexpr const char* kConsumerPlaceholder = "{consumer}";  // the reference of a consumer

// The results in a report of the probe (ProbeProtocol.h), in the order of the checks. A check
// without an outcome has failed with the reason `unfinished`. Malformed lines are ignored.
std::vector<Result> parseProbeReport(const std::string& report, const std::string& unfinished);

// The number of different files of this base name in the text of /proc/PID/maps. Deleted files
// count.
std::size_t countMappedFiles(const std::string& maps, const std::string& baseName);

}  // namespace conformance

#endif
