// FolderStat: stat of files by path or by folder record, the folder of the last one kept open for the next.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <utility>

// Records come folder by folder, so the folder of the last file looked at is
// kept open and the next file in it is looked up there: the kernel resolves
// one name instead of the whole path. Where the folder cannot be opened, the
// whole path is used. The answers are stat's (links followed).
class FolderStat {
 public:
  FolderStat() = default;
  ~FolderStat() { closeFolder(); }
  FolderStat(const FolderStat &) = delete;
  FolderStat &operator=(const FolderStat &) = delete;

  // stat of path, whose last name starts at nameStart (after a '/').
  int stat(const std::string &path, size_t nameStart, struct stat *info) {
    const size_t folderLength = nameStart - 1;
    if (m_folder.size() != folderLength || path.compare(0, folderLength, m_folder) != 0)
      openFolder(path.substr(0, folderLength), 0);
    return m_fd >= 0 ? fstatat(m_fd, path.c_str() + nameStart, info, 0) : ::stat(path.c_str(), info);
  }

  // A record's path as pruning looks it up: a top folder by its whole path,
  // anything else in its folder; nameLength is the length of its last name.
  int statRecord(const std::string &path, size_t nameLength, bool topFolder, struct stat *info) {
    return topFolder ? ::stat(path.c_str(), info) : stat(path, path.size() - nameLength, info);
  }

  // The same for name in the folder whose record is parent and whose path is
  // folder: checking the record number saves building and comparing paths.
  int statIn(uint32_t parent, const char *folder, const char *name, struct stat *info) {
    if (parent != m_parent) openFolder(folder, parent);
    return m_fd >= 0 ? fstatat(m_fd, name, info, 0) : ::stat((m_folder + '/' + name).c_str(), info);
  }

 private:
#ifdef O_PATH
  static constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
#else
  static constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
#endif

  // parent: the folder's record, or 0 when it came by path.
  void openFolder(std::string folder, uint32_t parent) {
    closeFolder();
    m_folder = std::move(folder);
    m_parent = parent;
    m_fd = open(m_folder.empty() ? "/" : m_folder.c_str(), kFolderFlags);
  }

  void closeFolder() {
    if (m_fd >= 0) close(m_fd);
    m_fd = -1;
  }

  std::string m_folder;
  int m_fd = -1;
  uint32_t m_parent = 0;
};
