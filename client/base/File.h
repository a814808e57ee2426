// Files that the command line names.

#ifndef CLIENT_BASE_FILE_H
#define CLIENT_BASE_FILE_H

#include <cstddef>
#include <string>

namespace topoctl {

// The file's bytes, but no more than one over the limit. Throws std::system_error.
std::string readFile(const std::string& path, std::size_t limit);

// A file that nobody can see half written: it gets its name when it is complete. Until then it is
// NAME.part, which the destructor removes. Readable and writable for its owner alone.
//
// Thread-safety: none.
class NewFile {
 public:
  // Throws Failure (kUsage) when a file of either name exists, or when none can be made.
  explicit NewFile(std::string path);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Throw Failure (kLocal), finish also when somebody else has made a file of the name meanwhile.
  void write(const void* bytes, std::size_t count);
  void finish();

 private:
  const std::string path_;
  const std::string draft_;
  int file_ = -1;
};

}  // namespace topoctl

#endif
