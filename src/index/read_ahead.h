// CReadAhead: reading the files a first indexing will come to next, on a second thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <sys/stat.h>
#include <sys/types.h>

class CKurvoIndex;
struct PreparedText;

// Walks a tree as indexDirectory does, in the same order, and has the kernel
// read each file an analyzer will read (up to the index's read limit), so
// that its bytes are in the page cache when the walk gets there. A file of
// 2 KiB to 1 MiB for the "utf8" analyzer is read and cut into words here
// instead, for the analyzer to take, unless the walk is about to come to it
// (the walk then cuts it itself while this thread goes on). The next few
// files wait in a queue while one is cut here: a walk that would wait for
// that one cuts the next queued one meanwhile. It stays at most filesAhead files ahead
// of the walk, reports nothing, changes nothing and only reads the index's
// patterns and settings, which a walk leaves alone.
class CReadAhead {
 public:
  CReadAhead(const CKurvoIndex &index, const std::string &top, uint32_t filesAhead);
  ~CReadAhead();  // stops the thread and waits for it
  CReadAhead(const CReadAhead &) = delete;
  CReadAhead &operator=(const CReadAhead &) = delete;

  // The walk is done with one more file that an analyzer read.
  void fileDone();
  // The words cut from path, if it was cut here; waits while it is being cut.
  std::unique_ptr<PreparedText> take(const std::string &path);

  // Whether a "utf8" file is cut into words before it is indexed: one of 2 KiB
  // to 1 MiB. Smaller ones cost little to cut as they are read, and the words
  // of larger ones would take memory while they wait.
  static bool worthCutting(const struct stat &info);
  static constexpr off_t kCutAheadSmallest = 2048;
  static constexpr uint64_t kCutAheadLimit = 1 << 20;

 private:
  void run();
  void walk(const std::string &folder);
  // Waits until the walk is near enough; false once stopping.
  bool mayReadNext();
  // Asks for the bytes of the file name in the open folder, the walk's file
  // number; one for the "utf8" analyzer may be queued to be cut into words.
  void readFile(int folder, const std::string &name, const std::string &path, uint64_t number, bool forUtf8);
  // Queues the open file fd to be cut when the walk is not about to come to
  // it and the budget holds it; false (fd left open) otherwise.
  bool queueCut(const std::string &path, uint64_t number, int fd, const struct stat &info);
  // Cuts queued files on this thread, the first first, until fewer than
  // left remain; those stay queued for the walk to take when it would wait.
  void cutQueued(size_t left);
  struct Queued;
  // Closes a queued file left uncut; the caller holds the lock.
  void drop(const Queued &queued);
  // Cuts a queued file on the calling thread and closes it; null when that fails.
  std::unique_ptr<PreparedText> cutHere(const Queued &queued) const;
  // Keeps what was cut (nothing when prepared is null) for take(); the
  // caller holds the lock.
  void keep(const std::string &path, uint64_t number, uint64_t size, std::unique_ptr<PreparedText> prepared);

  struct Queued {
    std::string path;
    uint64_t number;
    int fd;
    struct stat info;
  };

  const CKurvoIndex &m_index;
  const std::string m_top;
  const uint64_t m_filesAhead;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  uint64_t m_filesRead = 0;
  uint64_t m_filesDone = 0;
  bool m_waiting = false;
  // Files to cut, in the walk's order, each with its file open; cut files
  // by path, with their file numbers; the one this thread is cutting.
  std::deque<Queued> m_queue;
  std::map<std::string, std::pair<uint64_t, std::unique_ptr<PreparedText>>> m_prepared;
  std::string m_preparing;
  uint64_t m_preparedBytes = 0;  // the sizes of the files queued and cut, waiting
  std::condition_variable m_cutDone;
  std::atomic<bool> m_stopping{false};
  std::thread m_thread;
};
