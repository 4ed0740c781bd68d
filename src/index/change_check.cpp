// Whether an update would find anything to do: the records checked against the disk, on two threads at once.
#include <sys/stat.h>

#include <atomic>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "index/folder_stat.h"
#include "index/kurvo_index.h"
#include "index/processor_placement.h"
#include "report/message_keys.h"
#include "report/reporting.h"

// The records from first up to end (0: the last) in the order prune visits
// them: whether one vanished or changed.
bool CKurvoIndex::recordsChanged(uint32_t first, uint32_t end, FolderStat &folders) {
  uint32_t lastParentFetched = 0;
  std::string path;
  struct stat info;
  for (uint32_t record = first; record && record != end; record = files->getNext(record)) {
    const char *data = files->getData(record);
    if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    PruneAction action = PruneAction::None;
    if (!file_record::isObsolete(data) && fileActionInFolder(data, folders, action))
      lastParentFetched = file_record::parent(data);
    else
      action = pruneAction(record, data, lastParentFetched, path, info, folders);
    if (action != PruneAction::None) return true;
  }
  return false;
}

// The same on a helper thread, which must not call the host back: Broken
// where the caller's thread would raise an error, at the first record that
// changed or is broken.
CKurvoIndex::QuietCheck CKurvoIndex::recordsChangedQuietly(uint32_t first, uint32_t end, FolderStat &folders) const {
  std::string path;
  struct stat info;
  for (uint32_t record = first; record && record != end; record = files->getNext(record)) {
    const char *data = files->getData(record);
    if (!data) return QuietCheck::Broken;
    if (file_record::isObsolete(data)) continue;
    PruneAction action = PruneAction::None;
    if (!fileActionInFolder(data, folders, action)) {
      if (!quietPath(data, path)) return QuietCheck::Broken;
      action = actionForPath(data, path, info, folders);
    }
    if (action != PruneAction::None) return QuietCheck::Changed;
  }
  return QuietCheck::Unchanged;
}

// Only whether a record there would raise an error, without the disk.
bool CKurvoIndex::recordsBrokenQuietly(uint32_t first, uint32_t end) const {
  for (uint32_t record = first; record && record != end; record = files->getNext(record)) {
    const char *data = files->getData(record);
    if (!data) return true;
    const uint32_t parent = file_record::parent(data);
    if (!file_record::isObsolete(data) && parent != 0 && !files->getData(parent)) return true;
  }
  return false;
}

namespace {

// Runs of records handed out from both ends: the caller's thread takes them
// from the start, the helper from the end, so a helper that starts late
// leaves more to the caller, not a wait.
class RecordRuns {
 public:
  static constexpr size_t kRunLength = 64;

  explicit RecordRuns(const CFileStorage &files) {
    for (uint32_t record = files.getFirst(); record; record = files.getNext(record))
      if (m_records++ % kRunLength == 0) m_starts.push_back(record);
    m_back = m_starts.size();
  }

  size_t records() const { return m_records; }
  size_t count() const { return m_starts.size(); }
  uint32_t start(size_t run) const { return m_starts[run]; }
  // The record after the run (0: the table's end).
  uint32_t end(size_t run) const { return run + 1 < m_starts.size() ? m_starts[run + 1] : 0; }
  // The next run from the front, or from the back; false when none is left.
  bool takeFront(size_t &run) { return take(run, true); }
  bool takeBack(size_t &run) { return take(run, false); }
  // No more runs are handed out.
  void close() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_front = m_back;
  }

 private:
  bool take(size_t &run, bool front) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_front == m_back) return false;
    run = front ? m_front++ : --m_back;
    return true;
  }

  size_t m_records = 0;
  std::vector<uint32_t> m_starts;
  std::mutex m_mutex;
  size_t m_front = 0;
  size_t m_back = 0;
};

// What both threads have learnt: the first run known to hold a change (the
// run count while none is), and whether a broken record was met.
struct CheckFindings {
  explicit CheckFindings(size_t runs) : runs(runs), firstChange(runs) {}

  bool changeKnown() const { return firstChange.load() < runs; }
  void noteChange(size_t run) {
    size_t known = firstChange.load();
    while (run < known && !firstChange.compare_exchange_weak(known, run)) {
    }
  }

  const size_t runs;
  std::atomic<size_t> firstChange;
  std::atomic<bool> broken{false};
};

}  // namespace

bool CKurvoIndex::hasChanges() {
  if (!files) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  // Checking a record is mostly a stat, so a large table is checked by two
  // threads at once, a run of records at a time: the caller's thread from
  // the start, raising errors as it goes, and a helper from the end. The
  // answer is the one a check in order gives, its errors included. Once a
  // run is known to hold a change, later runs no longer matter, and earlier
  // ones only for a broken record, which a check in order would meet first:
  // those are looked at without the disk. A broken record sends the check
  // back to the caller's thread, in order from where it stood.
  RecordRuns runs(*files);
  FolderStat folders;
  if (runs.records() < kRecordsForHelper) return recordsChanged(files->getFirst(), 0, folders);

  CheckFindings findings(runs.count());
  const auto checkQuietly = [&](size_t run, FolderStat &runFolders) {
    if (run > findings.firstChange.load()) return;
    if (findings.changeKnown()) {
      if (recordsBrokenQuietly(runs.start(run), runs.end(run))) findings.broken = true;
      return;
    }
    const QuietCheck found = recordsChangedQuietly(runs.start(run), runs.end(run), runFolders);
    if (found == QuietCheck::Changed) findings.noteChange(run);
    if (found == QuietCheck::Broken) findings.broken = true;
  };
  std::thread helper;
  try {
    helper = std::thread([&] {
      FolderStat helperFolders;
      size_t run = 0;
      while (!findings.broken && runs.takeBack(run)) checkQuietly(run, helperFolders);
    });
    placeAwayFromCaller(helper);
  } catch (const std::system_error &) {
  }
  const auto finish = [&] {
    runs.close();
    if (helper.joinable()) helper.join();
  };
  // The runs before this one were checked in order here and hold nothing.
  size_t checkedInOrder = 0;
  try {
    size_t run = 0;
    while (!findings.broken && runs.takeFront(run)) {
      if (findings.changeKnown()) {
        checkQuietly(run, folders);
      } else if (recordsChanged(runs.start(run), runs.end(run), folders)) {
        finish();
        return true;
      } else {
        checkedInOrder = run + 1;
      }
    }
  } catch (...) {
    finish();
    throw;
  }
  finish();
  if (findings.broken && checkedInOrder < runs.count()) return recordsChanged(runs.start(checkedInOrder), 0, folders);
  return findings.changeKnown();
}
