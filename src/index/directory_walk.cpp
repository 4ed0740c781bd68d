// Walking folders into the file table: the first indexing of a tree and the update of one folder.
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

#include "analyzers/file_analyzer.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/folder_reader.h"
#include "index/kurvo_index.h"
#include "index/read_ahead.h"

namespace {

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

// The outermost indexDirectory runs a read-ahead for its tree when the index
// asks for one; a thread that cannot be started only means none.
class ReadAheadScope {
 public:
  ReadAheadScope(CKurvoIndex &index, const char *top) : m_index(index) {
    if (index.ReadAhead <= 0 || index.readAhead) return;
    try {
      m_own = std::make_unique<CReadAhead>(index, top, static_cast<uint32_t>(index.ReadAhead));
    } catch (...) {
      return;
    }
    index.readAhead = m_own.get();
  }
  ~ReadAheadScope() {
    if (m_own) m_index.readAhead = nullptr;
  }
  ReadAheadScope(const ReadAheadScope &) = delete;
  ReadAheadScope &operator=(const ReadAheadScope &) = delete;

 private:
  CKurvoIndex &m_index;
  std::unique_ptr<CReadAhead> m_own;
};

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
  ReadAheadScope readAheadScope(*this, folderPath);
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
      if (analyzer && readAhead) readAhead->fileDone();
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
