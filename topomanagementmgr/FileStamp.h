// Recognises changes of a file without reading the file.

#ifndef TOPOMANAGEMENTMGR_FILESTAMP_H
#define TOPOMANAGEMENTMGR_FILESTAMP_H

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <optional>
#include <string>

namespace topo {

// Identity, size and times of a regular file, and whether every later change gives another stamp.
// A change through a memory mapping of the file counts when the system records it in the times.
//
// Thread-safety: a value without shared state. Ownership: owns nothing. Errors: none.
class FileStamp {
 public:
  // The time of day in nanoseconds.
  using Clock = std::int64_t (*)();

  static std::int64_t systemClock() {
    std::timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(now);
  }

  // Empty when there is no such file.
  static std::optional<FileStamp> of(const std::string& fileName, Clock clock) {
    struct stat status {};
    const bool found = ::stat(fileName.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return found ? std::optional(FileStamp(status, clock())) : std::nullopt;
  }

  // False within 3 seconds after a change: a second change at once may keep all times, because file
  // systems round them, some to 2 seconds.
  bool isSettled() const { return isSettled_; }

  // Whether the file system of a file records the time of each change at once. Other file systems
  // change files of the system itself, or report times that were cached before a change by another
  // machine.
  static bool recordsEveryChange(const std::string& fileName) {
    static constexpr std::int64_t kTypes[] = {
        EXT4_SUPER_MAGIC,  // ext2 and ext3 too
        XFS_SUPER_MAGIC,  BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC, TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC,
    };
    struct statfs status {};
    return ::statfs(fileName.c_str(), &status) == 0 &&
           std::find(std::begin(kTypes), std::end(kTypes),
                     static_cast<std::int64_t>(status.f_type)) != std::end(kTypes);
  }

  friend bool operator==(const FileStamp& a, const FileStamp& b) {
    return a.device_ == b.device_ && a.inode_ == b.inode_ && a.size_ == b.size_ &&
           a.modified_ == b.modified_ && a.changed_ == b.changed_;
  }

 private:
  static constexpr std::int64_t kSecond = 1000000000;
  static constexpr std::int64_t kSettlingTime = 3 * kSecond;

  static std::int64_t nanoseconds(const std::timespec& time) {
    return std::int64_t{time.tv_sec} * kSecond + time.tv_nsec;
  }

  FileStamp(const struct stat& status, std::int64_t now)
      : device_(status.st_dev),
        inode_(status.st_ino),
        size_(status.st_size),
        modified_(nanoseconds(status.st_mtim)),
        changed_(nanoseconds(status.st_ctim)),
        isSettled_(changed_ + kSettlingTime < now) {}

  dev_t device_;
  ino_t inode_;
  off_t size_;
  std::int64_t modified_;
  std::int64_t changed_;  // the system sets this time with every change, and no program can
  bool isSettled_;
};

}  // namespace topo

#endif
