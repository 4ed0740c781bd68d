// Walking folders into the file table: the first indexing of a tree and the update of one folder.
#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "analyzers/file_analyzer.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"

namespace {

// One open folder, read entry by entry. readdir is used rather than the
// deprecated readdir_r: each recursion level owns its own DIR stream, and
// glibc keeps the entry buffer inside that stream, so a deeper level never
// overwrites the entry a shallower level is still using.
class FolderReader {
 public:
  explicit FolderReader(const char *path) : m_dir(opendir(path)) {}
  ~FolderReader() {
    if (m_dir) closedir(m_dir);
  }
  FolderReader(const FolderReader &) = delete;
  FolderReader &operator=(const FolderReader &) = delete;

  bool isOpen() const { return m_dir != nullptr; }

  // The next name worth examining; false at the end, on a read error, or when
  // "." comes round a second time (some file systems repeat the listing).
  bool next(std::string &name) {
    for (;;) {
      const dirent *entry = readdir(m_dir);
      if (!entry) return false;
      if (std::strcmp(entry->d_name, ".") == 0) {
        if (m_dotSeen) return false;
        m_dotSeen = true;
        continue;
      }
      if (std::strcmp(entry->d_name, "..") == 0) continue;
      name = entry->d_name;
      return true;
    }
  }

 private:
  DIR *m_dir;
  bool m_dotSeen = false;
};

// Folders are recorded under their full path with parent 0.
uint32_t setFolderRecord(CFileStorage &files, uint32_t record, const struct stat &info) {
  char *data = files.getData(record);
  file_record::setParent(data, 0);
  file_record::setTime(data, static_cast<int32_t>(info.st_mtime));
  file_record::setAttributes(data, 0);
  return record;
}

void setFileRecord(CFileStorage &files, uint32_t record, uint32_t parentId, const struct stat &info) {
  char *data = files.getData(record);
  file_record::setParent(data, parentId);
  file_record::setTime(data, static_cast<int32_t>(info.st_mtime));
  file_record::setAttributes(data, 0);
  file_record::setSize(data, static_cast<uint32_t>(info.st_size));
}

}  // namespace

void CKurvoIndex::indexDirectory(const char *folderPath, uint32_t parentId) {
  if (skippedFolder == folderPath) {
    setStatus(kurvo_keys::kSkippedKurvoDirectory, "");
    return;
  }
  if (!files) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  // A reopened index maps its tables read-only, and known records are
  // rewritten in place.
  if (!files->isWritable()) files->enableWrite();
  // Counted before opening, so unreadable folders show up in the count too.
  ++DirectoriesRead;
  FolderReader folder(folderPath);
  if (!folder.isOpen()) {
    reportSkipped(errno == ENAMETOOLONG ? "path" : "folder", folderPath);
    return;
  }

  const bool atRoot = std::strcmp(folderPath, "/") == 0;
  std::string name;
  while (folder.next(name)) {
    std::string fullPath = folderPath;
    if (!atRoot) fullPath += '/';
    fullPath += name;
    if (progressDue()) reportProgress(kurvo_keys::kIndexingFile, fullPath + '\t' + std::to_string(DirectoriesRead));

    // lstat: links are left out of a first indexing.
    struct stat info;
    if (lstat(fullPath.c_str(), &info) != 0) {
      reportSkipped(errno == ENAMETOOLONG ? "path" : "file", fullPath);
      continue;
    }
    if (S_ISLNK(info.st_mode)) continue;

    if (S_ISDIR(info.st_mode)) {
      if (isExcluded(fullPath.c_str())) continue;
      uint32_t record = files->lookupFile(fullPath.c_str(), 0);
      if (!record) {
        ++FilesIndexed;
        record = files->addFile(fullPath.c_str());
      }
      setFolderRecord(*files, record, info);
      indexDirectory(fullPath.c_str(), record);
    } else if (S_ISREG(info.st_mode)) {
      CFileAnalyzer *analyzer = analyzerThatMatches(fullPath.c_str());
      if (analyzer && isExcluded(fullPath.c_str())) analyzer = nullptr;
      if (!TrackAll && !analyzer) continue;
      uint32_t record = files->lookupFile(name.c_str(), parentId);
      if (!record) {
        ++FilesIndexed;
        record = files->addFile(name.c_str());
      }
      setFileRecord(*files, record, parentId, info);
      if (analyzer && !analyzer->indexFile(fullPath.c_str(), record)) reportSkipped("file", fullPath);
    }
  }
}

void CKurvoIndex::updateDirectory(const char *folderPath, uint32_t folderId) {
  if (skippedFolder == folderPath) {
    setStatus(kurvo_keys::kSkippedKurvoDirectory, "");
    return;
  }
  FolderReader folder(folderPath);
  if (!folder.isOpen()) {
    reportSkipped(errno == ENAMETOOLONG ? "path" : "folder", folderPath);
    return;
  }

  std::string name;
  while (folder.next(name)) {
    const std::string fullPath = std::string(folderPath) + '/' + name;

    // stat follows links: an update takes in what links point at.
    struct stat info;
    if (stat(fullPath.c_str(), &info) != 0) continue;
    const bool isFolder = S_ISDIR(info.st_mode);

    // Entries already known are pruning's business.
    const uint32_t known =
        isFolder ? files->lookupFile(fullPath.c_str(), 0) : files->lookupFile(name.c_str(), folderId);
    if (known || isExcluded(fullPath.c_str())) continue;

    if (isFolder) {
      ++FilesIndexed;
      ++DirectoriesRead;
      const uint32_t record = setFolderRecord(*files, files->addFile(fullPath.c_str()), info);
      indexDirectory(fullPath.c_str(), record);
      continue;
    }
    CFileAnalyzer *analyzer = analyzerThatMatches(fullPath.c_str());
    if (!TrackAll && !analyzer) continue;
    ++FilesIndexed;
    const uint32_t record = files->addFile(name.c_str());
    setFileRecord(*files, record, folderId, info);
    // A FIFO or device is recorded but never opened: reading one can block
    // for ever.
    if (analyzer && S_ISREG(info.st_mode)) {
      if (progressDue()) reportProgress(kurvo_keys::kIndexingFile, fullPath + '\t' + std::to_string(DirectoriesRead));
      if (!analyzer->indexFile(fullPath.c_str(), record)) reportSkipped("file", fullPath);
    }
  }
}
