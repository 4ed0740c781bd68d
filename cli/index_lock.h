// One writer per index: an exclusive lock held for the whole of an index or update run.
#pragma once

#include <string>

namespace kurvo_cli {

// Takes the lock on the file at path (made if missing), writing this
// process's number into it. When another run holds it: waits, saying so
// once, or with noWait throws HostError naming that process. Searches take
// no lock: they read whole stores only.
class IndexLock {
 public:
  IndexLock(const std::string &path, bool noWait, bool quiet);
  ~IndexLock();
  IndexLock(const IndexLock &) = delete;
  IndexLock &operator=(const IndexLock &) = delete;

 private:
  int m_fd = -1;
};

}  // namespace kurvo_cli
