// Reads small files.

#ifndef AGENT_PROCESS_READFILE_H
#define AGENT_PROCESS_READFILE_H

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace agent {

// A file cannot be read. what() is "FILE: REASON".
// Thread-safety, ownership and errors: as std::runtime_error.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Returns the content of a file of at most mostBytes, a multiple of 1 MiB. Throws FileError, also
// for a larger file. Thread-safety: any thread.
std::string readFile(const std::filesystem::path& file, std::size_t mostBytes);

}  // namespace agent

#endif
