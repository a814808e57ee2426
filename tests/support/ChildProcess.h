// Runs work in a child process.

#ifndef TESTS_SUPPORT_CHILDPROCESS_H
#define TESTS_SUPPORT_CHILDPROCESS_H

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

// Forks, runs the work in the child, and returns the child's status as waitpid gives it.
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
