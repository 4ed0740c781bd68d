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
  if (forUtf8 && fstat(fd, &info) == 0 && worthCutting(info) && mayCut(path, number, info.st_size)) {
    std::unique_ptr<PreparedText> prepared;
    try {
      prepared = prepareText(m_index, fd, info);
    } catch (...) {
      // Out of memory: the analyzer reads the file itself.
    }
    cutDone(path, number, std::move(prepared));
    return;
  }
  // The analyzers read no further than the read limit. The kernel is asked
  // to bring the bytes in; a cached file costs nothing more.
  const off_t length = m_index.MaxPerFileRead > 0 ? static_cast<off_t>(m_index.MaxPerFileRead) : 0;
  if (length > 0) posix_fadvise(fd, 0, length, POSIX_FADV_WILLNEED);
  close(fd);
}

bool CReadAhead::mayCut(const std::string &path, uint64_t number, uint64_t size) {
  std::lock_guard<std::mutex> lock(m_mutex);
  // The file the walk is at, and the one after, are left to the walk, which
  // would only wait for them here: this thread goes on further ahead.
  if (number <= m_filesDone + 2 || m_preparedBytes + size > kCutAheadBudget) return false;
  m_preparing = path;
  return true;
}

void CReadAhead::cutDone(const std::string &path, uint64_t number, std::unique_ptr<PreparedText> prepared) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_preparing.clear();
    if (prepared && number > m_filesDone) {
      m_preparedBytes += prepared->size;
      m_prepared[path] = {number, std::move(prepared)};
    }
  }
  m_cutDone.notify_all();
}

std::unique_ptr<PreparedText> CReadAhead::take(const std::string &path) {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_cutDone.wait(lock, [&] { return m_preparing != path; });
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
