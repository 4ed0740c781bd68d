// FolderReader: the entries of one open folder, for the walk and its read-ahead.
#pragma once

#include <dirent.h>

#include <cstring>
#include <string>

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
  // The open folder's descriptor, for opening entries relative to it.
  int descriptor() const { return dirfd(m_dir); }

  // The next name worth examining; false at the end, on a read error, or when
  // "." comes round a second time (some file systems repeat the listing).
  // type, when given, receives the entry's d_type (DT_UNKNOWN where the file
  // system does not say).
  bool next(std::string &name, unsigned char *type = nullptr) {
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
      if (type) *type = entry->d_type;
      return true;
    }
  }

 private:
  DIR *m_dir;
  bool m_dotSeen = false;
};
