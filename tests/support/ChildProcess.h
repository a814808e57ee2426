// Work that has to be done in another process.

#ifndef TESTS_SUPPORT_CHILDPROCESS_H
#define TESTS_SUPPORT_CHILDPROCESS_H

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

// Runs work in a process of its own and says how that ended.
inline int statusOfChild(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

inline bool wasKilledBy(int status, int signal) {
  return WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

#endif
