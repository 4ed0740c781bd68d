// flock on a lock file beside the store; the holder's process number is written into it.
#include "index_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>

#include "host_error.h"
#include "library_callbacks.h"

namespace kurvo_cli {

namespace {

std::string holderOf(int fd) {
  char text[32] = {};
  const ssize_t got = pread(fd, text, sizeof text - 1, 0);
  std::string pid = got > 0 ? std::string(text, static_cast<size_t>(got)) : "";
  while (!pid.empty() && (pid.back() == '\n' || pid.back() == ' ')) pid.pop_back();
  return pid.empty() ? "another kurvo process" : "kurvo process " + pid;
}

}  // namespace

IndexLock::IndexLock(const std::string &path, bool noWait, bool quiet) {
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  m_fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (m_fd < 0) throw HostError("the lock file " + path + " cannot be opened: " + std::strerror(errno));
  if (::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) throw HostError("the lock file " + path + " cannot be locked: " + std::strerror(errno));
    const std::string holder = holderOf(m_fd);
    if (noWait) {
      ::close(m_fd);
      m_fd = -1;
      throw HostError(holder + " is writing this index; try again when it is done");
    }
    if (!quiet) std::cerr << "kurvo: note: waiting for " << holder << ", which is writing this index\n";
    // Polled, so that Ctrl-C still ends the wait.
    while (::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
      if (haltRequested()) {
        ::close(m_fd);
        m_fd = -1;
        throw HostError("interrupted while waiting for the index", kExitInterrupted);
      }
      ::usleep(100 * 1000);
    }
  }
  const std::string pid = std::to_string(::getpid()) + "\n";
  if (::ftruncate(m_fd, 0) == 0) {
    const ssize_t written = ::pwrite(m_fd, pid.data(), pid.size(), 0);
    (void)written;  // the number is only a courtesy to the next writer
  }
}

IndexLock::~IndexLock() {
  if (m_fd >= 0) ::close(m_fd);
}

}  // namespace kurvo_cli
