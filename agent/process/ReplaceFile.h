// Files that other programs read while the agent writes them.

#ifndef AGENT_PROCESS_REPLACEFILE_H
#define AGENT_PROCESS_REPLACEFILE_H

#include <filesystem>
#include <stdexcept>
#include <string>

namespace agent {

// A file cannot be written. One line.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Replaces a file, or makes it, in one step: a reader sees the old content or the new content, and
// the new content is on disk when the call returns. The content goes into a new file of an
// unpredictable name in the same folder, which is then renamed; a symbolic link at the path is
// replaced, never followed. The file is readable by everybody whom the umask of the process allows.
//
// what names the kind of the file in a failure. Throws FileError; the file is then as it was,
// unless only the folder could not be brought to disk.
void replaceFile(const std::string& what, const std::filesystem::path& path,
                 const std::string& content);

}  // namespace agent

#endif
