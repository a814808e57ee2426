// A file to which lines are appended.

#ifndef AGENT_PROCESS_APPENDEDFILE_H
#define AGENT_PROCESS_APPENDEDFILE_H

#include <filesystem>
#include <string>
#include <string_view>

namespace agent {

// Appends whole lines to a regular file. After a line that was written in part, the next line
// begins with a line feed.
//
// Thread-safety: one thread. Ownership: owns its descriptor. Errors: the constructor throws
// FileError; the functions return the reason of a failure, "" after a success.
class AppendedFile {
 public:
  // Opens the file, or creates it with the mode 0640.
  explicit AppendedFile(std::filesystem::path file);
  ~AppendedFile();

  AppendedFile(const AppendedFile&) = delete;
  AppendedFile& operator=(const AppendedFile&) = delete;

  // line: without a line feed.
  std::string append(std::string_view line);

  // Opens the file of the name again, as after its rotation. After a failure, the former file stays
  // in use.
  std::string reopen();

 private:
  const std::filesystem::path file_;
  int descriptor_ = -1;
  bool isPartial_ = false;  // the last line
};

}  // namespace agent

#endif
