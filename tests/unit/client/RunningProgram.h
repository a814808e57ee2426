// The built topoctl while it runs, its output read line by line.

#ifndef TESTS_UNIT_CLIENT_RUNNINGPROGRAM_H
#define TESTS_UNIT_CLIENT_RUNNINGPROGRAM_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace topoctl {

class RunningProgram {
 public:
  // Standard error is that of this process.
  explicit RunningProgram(const std::vector<std::string>& arguments);
  ~RunningProgram();  // kills it unless it was waited for
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  // Without its end; waits for it. "" when there is no more.
  std::string line();

  void closeOutput();  // nobody reads it any more
  void signal(int number);

  // The exit code; minus the number of the signal that ended it.
  int wait();

 private:
  pid_t process_ = 0;
  int output_ = -1;
  std::string buffered_;
};

}  // namespace topoctl

#endif
