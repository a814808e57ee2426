// The configuration file of topo-agentd.

#ifndef AGENT_CONFIGFILE_H
#define AGENT_CONFIGFILE_H

#include <cstddef>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace agent {

// One line `NAME = VALUE`, or NAME alone for a flag.
struct ConfigLine {
  std::size_t number = 0;  // of the line in the file, from 1
  std::string name;
  std::optional<std::string> value;
};

// Reads a configuration file. Skips empty lines, lines that begin with # or ;, and the text from a
// # after a value. A value in double or single quotes may contain every character but the quote and
// line breaks; the result has no quotes. Throws UsageError "FILE:LINE: REASON" for any other line
// and for a repeated name that is not in `lists`, and "FILE: REASON" for a file that cannot be read
// or is larger than 1 MiB.
// Thread-safety: any thread.
std::vector<ConfigLine> readConfigFile(const std::filesystem::path& file,
                                       const std::set<std::string>& lists = {});

// The name in `names` that is most similar to `name`: at most a third of the longer name differs.
// Empty without such a name.
std::string mostSimilarName(const std::string& name, const std::vector<std::string>& names);

}  // namespace agent

#endif
