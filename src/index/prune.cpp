// Bringing a stored index up to date with the disk: drop vanished files, re-index changed ones.
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/folder_stat.h"
#include "index/kurvo_index.h"
#include "index/processor_placement.h"
#include "storage/table_sizes.h"

namespace {

// A record whose parent cannot be fetched means the file table is broken;
// leave what we know in the report folder (the current one by default)
// before giving up.
void writeDeadParentReport(const std::string &folder, const char *name, uint32_t record, uint32_t parent,
                           uint32_t lastParentFetched) {
  const std::string path = folder.empty() ? "deadkurvo.txt" : folder + "/deadkurvo.txt";
  FILE *out = std::fopen(path.c_str(), "w");
  if (!out) return;
  std::fprintf(out, "Name %s\nnFile %x\npFileInfo->m_nParent %x\npFolderInfo %x\n", name, static_cast<unsigned>(record),
               static_cast<unsigned>(parent), static_cast<unsigned>(lastParentFetched));
  std::fclose(out);
}

// A file put back older than the last run (mv, cp -p, tar x, rsync -a), or
// one whose size changed, differs from its record.
bool differsFromRecord(const char *record, const struct stat &info) {
  if (file_record::time(record) != static_cast<int32_t>(info.st_mtime)) return true;
  return file_record::parent(record) != 0 && file_record::size(record) != static_cast<uint32_t>(info.st_size);
}

bool isKept(const std::vector<std::string> &folders, const std::string &path) {
  for (const std::string &folder : folders) {
    if (path.compare(0, folder.size(), folder) == 0 && (path.size() == folder.size() || path[folder.size()] == '/'))
      return true;
  }
  return false;
}

// The path prunedPath gives; false, saying nothing, when the record's
// parent cannot be fetched.
bool recordPath(const CFileStorage &files, const char *data, std::string &path) {
  const uint32_t parent = file_record::parent(data);
  if (parent == 0) {
    path = file_record::name(data);
    return true;
  }
  const char *folder = files.getData(parent);
  if (!folder) return false;
  if (file_record::parent(folder) != 0)
    path.clear();
  else
    path = std::string(file_record::name(folder)) + '/' + file_record::name(data);
  return true;
}

std::string progressText(uint32_t visited, uint32_t total) {
  char text[32];
  std::snprintf(text, sizeof text, "%d/%d", static_cast<int>(visited), static_cast<int>(total));
  return text;
}

}  // namespace

// The path of a folder or of a file in a folder; "" for a member of an
// archive or mailbox, which only its container knows.
std::string CKurvoIndex::prunedPath(uint32_t record, const char *data, uint32_t &lastParentFetched) {
  std::string path;
  const uint32_t parent = file_record::parent(data);
  if (!recordPath(*files, data, path)) {
    try {
      throwKurvoError(kurvo_keys::kAssertionFailed, "");
    } catch (int) {
      writeDeadParentReport(reportFolder, file_record::name(data), record, parent, lastParentFetched);
      throwKurvoError(kurvo_keys::kPruneParentError, "");
    }
  }
  if (parent != 0) lastParentFetched = parent;
  return path;
}

// A changed file: its record takes the new time and size, and a file that an
// analyzer reads goes under a new record with its words; the old record's
// links then point at a deleted entry, which readers pass over.
void CKurvoIndex::refreshChangedFile(uint32_t record, const std::string &path, const struct stat &info) {
  CFileAnalyzer *analyzer = analyzerThatMatches(path.c_str());
  if (analyzer && isExcluded(path.c_str())) analyzer = nullptr;
  if (!analyzer && !TrackAll) return;

  const int32_t modified = static_cast<int32_t>(info.st_mtime);
  const uint32_t size = static_cast<uint32_t>(info.st_size);
  char *old = files->getData(record);
  file_record::setTime(old, modified);
  file_record::setAttributes(old, 0);
  file_record::setSize(old, size);
  if (!analyzer) return;

  ++FilesIndexed;
  const uint32_t parent = file_record::parent(old);
  const std::string name = file_record::name(old);
  const uint32_t fresh = files->addFile(name.c_str());
  ++ContentsIndexed;
  file_record::markObsolete(files->getData(record));
  char *current = files->getData(fresh);
  file_record::setTime(current, modified);
  file_record::setAttributes(current, 0);
  file_record::setParent(current, parent);
  file_record::setSize(current, size);
  if (S_ISREG(info.st_mode) && !analyzer->indexFile(path.c_str(), fresh)) reportSkipped("file", path);
}

void CKurvoIndex::prune() {
  // New words of this run collect in a fresh word-link list for compressLinks.
  delete wordLinks;
  wordLinks = nullptr;
  wordLinks =
      new CWordLinks(storagePath + "temp", table_sizes::kLinks.initial, table_sizes::kLinks.increment, UseRanking);
  enableWrite(true);

  // Records added from here on (updates, re-indexed files) are not revisited.
  const uint32_t recordLimit = files->getRecordLimit();
  uint32_t visited = 0;
  uint32_t lastParentFetched = 0;

  std::string path;
  struct stat info;
  FolderStat folders;
  for (uint32_t record = files->getFirst(); record && record < recordLimit; record = files->getNext(record)) {
    ++visited;
    // Formatted only when a report is due: most records pass without one.
    if (progressDue()) reportProgress(kurvo_keys::kUpdatingStatus, progressText(visited, FilesIndexed));

    const char *data = files->getData(record);
    if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    const PruneAction action = pruneAction(record, data, lastParentFetched, path, info, folders);
    if (action == PruneAction::Drop) {
      file_record::markObsolete(files->getData(record));
    } else if (action == PruneAction::Refresh && file_record::parent(data) == 0) {
      updateDirectory(path.c_str(), record);
      // Remembered, so that the folder is walked again only when it changes.
      if (ExactUpdates) file_record::setTime(files->getData(record), static_cast<int32_t>(info.st_mtime));
    } else if (action == PruneAction::Refresh) {
      refreshChangedFile(record, path, info);
    }
  }
}

CKurvoIndex::PruneAction CKurvoIndex::pruneAction(uint32_t record, const char *data, uint32_t &lastParentFetched,
                                                  std::string &path, struct stat &info, FolderStat &folders) {
  if (file_record::isObsolete(data)) return PruneAction::None;
  path = prunedPath(record, data, lastParentFetched);
  return actionForPath(data, path, info, folders);
}

CKurvoIndex::PruneAction CKurvoIndex::actionForPath(const char *data, const std::string &path, struct stat &info,
                                                    FolderStat &folders) const {
  if (path.empty() || isKept(keptFolders, path)) return PruneAction::None;
  const int found = file_record::parent(data) == 0
                        ? stat(path.c_str(), &info)
                        : folders.stat(path, path.size() - std::strlen(file_record::name(data)), &info);
  if (found != 0) return PruneAction::Drop;
  return isChanged(data, info) ? PruneAction::Refresh : PruneAction::None;
}

bool CKurvoIndex::isChanged(const char *data, const struct stat &info) const {
  return static_cast<int32_t>(info.st_mtime) > TimeBase || (ExactUpdates && differsFromRecord(data, info));
}

bool CKurvoIndex::fileActionInFolder(const char *data, FolderStat &folders, PruneAction &action) const {
  const uint32_t parent = file_record::parent(data);
  if (parent == 0 || !keptFolders.empty()) return false;
  const char *folder = files->getData(parent);
  if (!folder || file_record::parent(folder) != 0) return false;
  struct stat info;
  if (folders.statIn(parent, file_record::name(folder), file_record::name(data), &info) != 0)
    action = PruneAction::Drop;
  else
    action = isChanged(data, info) ? PruneAction::Refresh : PruneAction::None;
  return true;
}

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
      if (!recordPath(*files, data, path)) return QuietCheck::Broken;
      action = actionForPath(data, path, info, folders);
    }
    if (action != PruneAction::None) return QuietCheck::Changed;
  }
  return QuietCheck::Unchanged;
}

namespace {

// Runs of records handed out from both ends: the caller's thread takes them
// from the start, the helper from the end, so a helper that starts late (a
// sleeping processor wakes slowly) leaves more to the caller, not a wait.
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

}  // namespace

bool CKurvoIndex::hasChanges() {
  if (!files) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  // Checking a record is mostly a stat, so a large table is checked by two
  // threads at once, a run of records at a time. The answer is the one a
  // check in order gives, its errors included: the caller's runs come first
  // and are checked with errors raised; the helper's only say what they met
  // first, and one it found broken is checked again in order.
  RecordRuns runs(*files);
  FolderStat folders;
  if (runs.records() < kRecordsForHelper) return recordsChanged(files->getFirst(), 0, folders);

  // The runs the caller took stay Unchecked here.
  std::vector<QuietCheck> helped(runs.count(), QuietCheck::Unchecked);
  std::thread helper;
  try {
    helper = std::thread([&] {
      FolderStat helperFolders;
      size_t run = 0;
      while (runs.takeBack(run)) helped[run] = recordsChangedQuietly(runs.start(run), runs.end(run), helperFolders);
    });
    placeAwayFromCaller(helper);
  } catch (const std::system_error &) {
  }
  // The helper is stopped once the caller's runs have answered for all.
  const auto finish = [&] {
    runs.close();
    if (helper.joinable()) helper.join();
  };
  try {
    size_t run = 0;
    while (runs.takeFront(run)) {
      if (recordsChanged(runs.start(run), runs.end(run), folders)) {
        finish();
        return true;
      }
    }
  } catch (...) {
    finish();
    throw;
  }
  finish();
  for (size_t run = 0; run < runs.count(); ++run) {
    if (helped[run] == QuietCheck::Changed) return true;
    // What the helper found broken is checked here in order from that run on.
    if (helped[run] == QuietCheck::Broken) return recordsChanged(runs.start(run), 0, folders);
  }
  return false;
}
