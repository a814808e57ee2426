// Replaces files that other programs may be reading.

#ifndef AGENT_PROCESS_REPLACEFILE_H
#define AGENT_PROCESS_REPLACEFILE_H

#include <filesystem>
#include <stdexcept>
#include <string>

namespace agent {

// The reason why a file cannot be written, in one line. A plain value.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Creates or replaces a file in one step: a reader sees the old content or the new content. The new
// content is on disk when the function returns. Writes a draft with an unpredictable name in the
// same folder, and renames the draft. Replaces a symbolic link at the path without following the
// link, and refuses a device, a pipe or a socket. The mode of the file is 0644 without the bits of
// the umask.
//
// kind: names the kind of the file in the reason of a failure. Thread-safety: any thread. Throws
// FileError. The file is then unchanged, unless only the sync of the folder failed.
void replaceFile(const std::string& kind, const std::filesystem::path& path,
                 const std::string& content);

}  // namespace agent

#endif
