// Runs a piece of a test in a child process, so that a hang, an abort or an
// exit() can be observed from outside: the parent waits for the child with
// a limit and kills it when the limit passes (a hang then fails the test
// instead of stalling the run).
#pragma once
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace zar_test {

struct child_result {
  bool hung = false;
  bool exited = false;
  int status = -1;  // exit status, or the signal number when killed
  std::string describe() const {
    if (hung) return "hung (killed after the limit)";
    return exited ? "exited with " + std::to_string(status) : "killed by signal " + std::to_string(status);
  }
};

// Waits for pid, polling, for at most `limit_s` seconds.
inline child_result wait_child(pid_t pid, double limit_s) {
  child_result r;
  timespec start{};
  clock_gettime(CLOCK_MONOTONIC, &start);
  for (;;) {
    int st = 0;
    const pid_t got = waitpid(pid, &st, WNOHANG);
    if (got == pid) {
      r.exited = WIFEXITED(st);
      r.status = r.exited ? WEXITSTATUS(st) : WTERMSIG(st);
      return r;
    }
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if ((now.tv_sec - start.tv_sec) + (now.tv_nsec - start.tv_nsec) * 1e-9 > limit_s) {
      kill(pid, SIGKILL);
      waitpid(pid, &st, 0);
      r.hung = true;
      return r;
    }
    const timespec nap{0, 2'000'000};
    nanosleep(&nap, nullptr);
  }
}

// Runs fn() in a forked child, which exits with fn's return value (fn may
// also call exit itself).
template <class F> child_result in_child(F fn, double limit_s) {
  const pid_t pid = fork();
  if (pid == 0) _exit(fn());
  if (pid < 0) return {};
  return wait_child(pid, limit_s);
}

}  // namespace zar_test
