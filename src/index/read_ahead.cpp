// CReadAhead: reading the files a first indexing will come to next, on a second thread.
#include "index/read_ahead.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "analyzers/prepared_text.h"
#include "analyzers/utf8_analyzer.h"
#include "index/folder_reader.h"
#include "index/kurvo_index.h"

namespace {

// Files that would take the bytes of the cut files waiting past a budget
// are only read into the page cache.
constexpr uint64_t kCutAheadBudget = 8 << 20;
// Files left queued while this thread cuts the one before them: the walk
// cuts them when it would wait for that one.
constexpr size_t kQueuedForTheWalk = 3;

}  // namespace

bool CReadAhead::worthCutting(const struct stat &info) {
  return S_ISREG(info.st_mode) && info.st_size >= kCutAheadSmallest &&
         static_cast<uint64_t>(info.st_size) <= kCutAheadLimit;
}

CReadAhead::CReadAhead(const CKurvoIndex &index, const std::string &top, uint32_t filesAhead)
    : m_index(index), m_top(top), m_filesAhead(filesAhead) {
  m_thread = std::thread(&CReadAhead::run, this);
}

CReadAhead::~CReadAhead() {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_stopping = true;
  }
  m_changed.notify_all();
  m_thread.join();
  for (const Queued &queued : m_queue) close(queued.fd);
}

void CReadAhead::fileDone() {
  bool wake = false;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_filesDone;
    // A waiting thread is woken once half its window is free, not for every file.
    wake = m_waiting && m_filesRead <= m_filesDone + m_filesAhead / 2;
  }
  if (wake) m_changed.notify_all();
}

void CReadAhead::run() {
  // Nothing may leave the thread: reading ahead only ever saves time.
  try {
    walk(m_top);
    if (!m_stopping) cutQueued(1);
  } catch (...) {
  }
}

// The walk's own decisions: links are passed over, the storage's folder and
// excluded folders are not entered, a file counts when an analyzer takes it.
void CReadAhead::walk(const std::string &folder) {
  if (m_index.skippedFolder == folder) return;
  FolderReader reader(folder.c_str());
  if (!reader.isOpen()) return;
  const bool atRoot = folder == "/";
  std::string name;
  unsigned char type = DT_UNKNOWN;
  while (reader.next(name, &type)) {
    const std::string path = atRoot ? folder + name : folder + '/' + name;
    // The entry's type saves a stat where the file system gives it.
    struct stat info;
    if (type == DT_UNKNOWN) {
      if (lstat(path.c_str(), &info) != 0) continue;
      type = S_ISDIR(info.st_mode) ? DT_DIR : S_ISREG(info.st_mode) ? DT_REG : DT_LNK;
    }
    if (type == DT_DIR) {
      if (!m_index.isExcluded(path.c_str())) walk(path);
    } else if (type == DT_REG) {
      const CFileAnalyzer *analyzer = m_index.analyzerThatMatches(path.c_str());
      if (analyzer && !m_index.isExcluded(path.c_str())) {
        if (!mayReadNext()) return;
        readFile(reader.descriptor(), name, path, m_filesRead, dynamic_cast<const CUtf8Analyzer *>(analyzer));
      }
    }
    if (m_stopping) return;
  }
}

bool CReadAhead::mayReadNext() {
  std::unique_lock<std::mutex> lock(m_mutex);
  if (m_filesRead >= m_filesDone + m_filesAhead) {
    m_waiting = true;
    m_changed.wait(lock, [this] { return m_stopping || m_filesRead <= m_filesDone + m_filesAhead / 2; });
    m_waiting = false;
  }
  ++m_filesRead;
  return !m_stopping;
}

void CReadAhead::readFile(int folder, const std::string &name, const std::string &path, uint64_t number, bool forUtf8) {
  // Opened relative to its folder: the kernel need not walk the whole path again.
  const int fd = openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0) return;
  struct stat info;
  if (forUtf8 && fstat(fd, &info) == 0 && worthCutting(info) && queueCut(path, number, fd, info)) {
    cutQueued(kQueuedForTheWalk + 1);
    return;
  }
  // The analyzers read no further than the read limit. The kernel is asked
  // to bring the bytes in; a cached file costs nothing more.
  const off_t length = m_index.MaxPerFileRead > 0 ? static_cast<off_t>(m_index.MaxPerFileRead) : 0;
  if (length > 0) posix_fadvise(fd, 0, length, POSIX_FADV_WILLNEED);
  close(fd);
}

bool CReadAhead::queueCut(const std::string &path, uint64_t number, int fd, const struct stat &info) {
  std::lock_guard<std::mutex> lock(m_mutex);
  // The file the walk is at, and the one after, are left to the walk, which
  // would only wait for them here.
  const uint64_t size = static_cast<uint64_t>(info.st_size);
  if (number <= m_filesDone + 2 || m_preparedBytes + size > kCutAheadBudget) return false;
  m_preparedBytes += size;
  m_queue.push_back({path, number, fd, info});
  return true;
}

void CReadAhead::cutQueued(size_t left) {
  for (;;) {
    Queued next;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      if (m_stopping || m_queue.size() < left || m_queue.empty()) return;
      next = std::move(m_queue.front());
      m_queue.pop_front();
      // One the walk has passed is dropped.
      if (next.number <= m_filesDone) {
        drop(next);
        continue;
      }
      m_preparing = next.path;
    }
    std::unique_ptr<PreparedText> prepared = cutHere(next);
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_preparing.clear();
      keep(next.path, next.number, static_cast<uint64_t>(next.info.st_size), std::move(prepared));
    }
    m_cutDone.notify_all();
  }
}

void CReadAhead::drop(const Queued &queued) {
  close(queued.fd);
  m_preparedBytes -= static_cast<uint64_t>(queued.info.st_size);
}

std::unique_ptr<PreparedText> CReadAhead::cutHere(const Queued &queued) const {
  try {
    return prepareText(m_index, queued.fd, queued.info);
  } catch (...) {
    // Out of memory: the analyzer reads the file itself.
    return nullptr;
  }
}

void CReadAhead::keep(const std::string &path, uint64_t number, uint64_t size, std::unique_ptr<PreparedText> prepared) {
  if (prepared && number > m_filesDone)
    m_prepared[path] = {number, std::move(prepared)};
  else
    m_preparedBytes -= size;
}

std::unique_ptr<PreparedText> CReadAhead::take(const std::string &path) {
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    // Queued and not begun: cut here, now.
    for (auto it = m_queue.begin(); it != m_queue.end(); ++it) {
      if (it->path != path) continue;
      const Queued queued = std::move(*it);
      m_queue.erase(it);
      m_preparedBytes -= static_cast<uint64_t>(queued.info.st_size);
      lock.unlock();
      return cutHere(queued);
    }
    if (m_preparing != path) break;
    // This thread is cutting it: rather than wait, the walk cuts the file
    // queued next, which it will come to after this one.
    if (m_queue.empty()) {
      m_cutDone.wait(lock);
      continue;
    }
    Queued next = std::move(m_queue.front());
    m_queue.pop_front();
    if (next.number <= m_filesDone) {
      drop(next);
      continue;
    }
    lock.unlock();
    std::unique_ptr<PreparedText> prepared = cutHere(next);
    lock.lock();
    keep(next.path, next.number, static_cast<uint64_t>(next.info.st_size), std::move(prepared));
  }
  // Files the walk has passed are dropped, whatever became of them.
  for (auto it = m_prepared.begin(); it != m_prepared.end();) {
    if (it->second.first > m_filesDone) {
      ++it;
      continue;
    }
    m_preparedBytes -= it->second.second->size;
    it = m_prepared.erase(it);
  }
  auto found = m_prepared.find(path);
  if (found == m_prepared.end()) return nullptr;
  std::unique_ptr<PreparedText> prepared = std::move(found->second.second);
  m_preparedBytes -= prepared->size;
  m_prepared.erase(found);
  return prepared;
}
