// Reading and creating the files of the command line.

#ifndef CLIENT_BASE_FILE_H
#define CLIENT_BASE_FILE_H

#include <cstddef>
#include <string>

namespace topoctl {

// Returns the bytes of the file; of a file over `limit` bytes the first `limit` + 1. Throws
// std::system_error.
std::string readFile(const std::string& path, std::size_t limit);

// Writes a new file so that other processes never see an incomplete file: writes the content to
// NAME.part, and finish() renames NAME.part to NAME. The owner has read and write permission, other
// users have no permission. Without finish() the destructor removes NAME.part.
//
// Thread-safety: none. Owns the open file and NAME.part. Errors: Failure, see each function.
class NewFile {
 public:
  // Creates NAME.part. Throws Failure (kUsage) when NAME or NAME.part exists or cannot be created.
  explicit NewFile(std::string path);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  // Both throw Failure (kLocal). finish() fails, too, when NAME has been created in the meantime.
  void write(const void* bytes, std::size_t count);
  void finish();

 private:
  const std::string path_;
  const std::string draft_;
  int file_ = -1;
};

}  // namespace topoctl

#endif
