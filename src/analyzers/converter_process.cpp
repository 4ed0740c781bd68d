// Running an external converter: fork, a process group of its own, limits, and a bounded wait.
#include "analyzers/converter_process.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

namespace {

// How often a running converter is looked at.
constexpr long kPollNanoseconds = 5 * 1000 * 1000;

void sleepPoll() {
  timespec pause{0, kPollNanoseconds};
  nanosleep(&pause, nullptr);
}

double secondsSince(const timespec &start) {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec - start.tv_sec) + static_cast<double>(now.tv_nsec - start.tv_nsec) / 1e9;
}

// In the child, between fork and exec: only async-signal-safe calls.
[[noreturn]] void execConverter(const char *command, uint64_t outputLimit) {
  setpgid(0, 0);
  if (outputLimit > 0) {
    rlimit limit{};
    limit.rlim_cur = limit.rlim_max = static_cast<rlim_t>(outputLimit);
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  signal(SIGXFSZ, SIG_DFL);
  execl("/bin/sh", "sh", "-c", command, static_cast<char *>(nullptr));
  _exit(127);
}

}  // namespace

std::string shellQuoted(const std::string &path) {
  std::string quoted = "'";
  for (char c : path) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return quoted + "'";
}

ConverterResult runConverter(const std::string &command, int timeLimitSeconds, uint64_t outputLimit) {
  const pid_t child = fork();
  if (child < 0) return ConverterResult::NotStarted;
  if (child == 0) execConverter(command.c_str(), outputLimit);
  // Set on both sides, so that a kill at once after fork still reaches it.
  setpgid(child, child);

  timespec start{};
  clock_gettime(CLOCK_MONOTONIC, &start);
  for (;;) {
    int status = 0;
    const pid_t done = waitpid(child, &status, WNOHANG);
    if (done == child || (done < 0 && errno != EINTR)) return ConverterResult::Finished;
    if (timeLimitSeconds > 0 && secondsSince(start) >= timeLimitSeconds) break;
    sleepPoll();
  }
  // The shell's own children (a pipeline, a redirection) go with it.
  kill(-child, SIGKILL);
  kill(child, SIGKILL);
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
  return ConverterResult::TimedOut;
}
