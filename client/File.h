// Files that the command line names.

#ifndef CLIENT_FILE_H
#define CLIENT_FILE_H

#include <cstddef>
#include <string>

namespace topoctl {

// The file's bytes, but no more than one over the limit. Throws std::system_error.
std::string readFile(const std::string& path, std::size_t limit);

}  // namespace topoctl

#endif
