// The configuration file of topo-agentd.

#ifndef AGENT_CONFIGFILE_H
#define AGENT_CONFIGFILE_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace agent {

// One line `NAME = VALUE`. A line with a NAME alone has the value "true".
struct ConfigLine {
  std::size_t number = 0;  // of the line in the file, from 1
  std::string name;
  std::string value;
};

// Reads a configuration file. Skips empty lines and comments, which begin with # or ;. Removes the
// quotes around a value. Throws UsageError "FILE:LINE: REASON" for any other line and for a
// repeated name, and "FILE: REASON" for a file that cannot be read or is larger than 1 MiB.
// Thread-safety: any thread.
std::vector<ConfigLine> readConfigFile(const std::filesystem::path& file);

// The name in `names` that is most similar to `name`: at most a third of the longer name differs.
// Empty without such a name.
std::string mostSimilarName(const std::string& name, const std::vector<std::string>& names);

}  // namespace agent

#endif
