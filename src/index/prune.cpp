// Bringing a stored index up to date with the disk: drop vanished files, re-index changed ones.
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/folder_stat.h"
#include "index/kurvo_index.h"
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

std::string progressText(uint32_t visited, uint32_t total) {
  char text[32];
  std::snprintf(text, sizeof text, "%d/%d", static_cast<int>(visited), static_cast<int>(total));
  return text;
}

}  // namespace

// The path prunedPath gives; false, saying nothing, when the record's
// parent cannot be fetched.
bool CKurvoIndex::quietPath(const char *data, std::string &path) const {
  const uint32_t parent = file_record::parent(data);
  if (parent == 0) {
    path = file_record::name(data);
    return true;
  }
  const char *folder = files->getData(parent);
  if (!folder) return false;
  if (file_record::parent(folder) != 0)
    path.clear();
  else
    path = std::string(file_record::name(folder)) + '/' + file_record::name(data);
  return true;
}

// The path of a folder or of a file in a folder; "" for a member of an
// archive or mailbox, which only its container knows.
std::string CKurvoIndex::prunedPath(uint32_t record, const char *data, uint32_t &lastParentFetched) {
  std::string path;
  const uint32_t parent = file_record::parent(data);
  if (!quietPath(data, path)) {
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
  PruneAhead ahead;
  for (uint32_t record = files->getFirst(); record && record < recordLimit; record = files->getNext(record)) {
    ++visited;
    // Formatted only when a report is due: most records pass without one.
    if (progressDue()) reportProgress(kurvo_keys::kUpdatingStatus, progressText(visited, FilesIndexed));

    const PruneAhead::Answer *answer = ReadAhead > 0 ? ahead.take(*this, record, recordLimit) : nullptr;
    const char *data = files->getData(record);
    if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    const PruneAction action = pruneAction(record, data, lastParentFetched, path, info, folders, answer);
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
                                                  std::string &path, struct stat &info, FolderStat &folders,
                                                  const PruneAhead::Answer *ahead) {
  if (file_record::isObsolete(data)) return PruneAction::None;
  path = prunedPath(record, data, lastParentFetched);
  return actionForPath(data, path, info, folders, ahead);
}

CKurvoIndex::PruneAction CKurvoIndex::actionForPath(const char *data, const std::string &path, struct stat &info,
                                                    FolderStat &folders, const PruneAhead::Answer *ahead) const {
  if (path.empty() || isKept(keptFolders, path)) return PruneAction::None;
  int found = -1;
  if (ahead && ahead->path == path) {
    found = ahead->found;
    info = ahead->info;
  } else {
    found = folders.statRecord(path, std::strlen(file_record::name(data)), file_record::parent(data) == 0, &info);
  }
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
