// CReadAhead: reading the files a first indexing will come to next, on a second thread.
#include "index/read_ahead.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "index/folder_reader.h"
#include "index/kurvo_index.h"

namespace {

constexpr size_t kReadSize = 1 << 16;

}  // namespace

CReadAhead::CReadAhead(const CKurvoIndex &index, const std::string &top, uint32_t filesAhead)
    : m_index(index), m_top(top), m_filesAhead(filesAhead), m_buffer(kReadSize) {
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
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_filesDone;
  }
  m_changed.notify_all();
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
  while (reader.next(name)) {
    const std::string path = atRoot ? folder + name : folder + '/' + name;
    struct stat info;
    if (lstat(path.c_str(), &info) != 0 || S_ISLNK(info.st_mode)) continue;
    if (S_ISDIR(info.st_mode)) {
      if (!m_index.isExcluded(path.c_str())) walk(path);
    } else if (S_ISREG(info.st_mode) && m_index.analyzerThatMatches(path.c_str()) &&
               !m_index.isExcluded(path.c_str())) {
      if (!mayReadNext()) return;
      readFile(path);
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stopping) return;
  }
}

bool CReadAhead::mayReadNext() {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_changed.wait(lock, [this] { return m_stopping || m_filesRead < m_filesDone + m_filesAhead; });
  ++m_filesRead;
  return !m_stopping;
}

void CReadAhead::readFile(const std::string &path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return;
  // The analyzers read no further than this.
  uint64_t left = m_index.MaxPerFileRead > 0 ? static_cast<uint64_t>(m_index.MaxPerFileRead) : 0;
  while (left > 0) {
    const ssize_t got = read(fd, m_buffer.data(), static_cast<size_t>(std::min<uint64_t>(left, m_buffer.size())));
    if (got <= 0) break;
    left -= static_cast<uint64_t>(got);
  }
  close(fd);
}
