// Full paths of file records, rebuilt from their parent chains.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <memory_resource>
#include <unordered_map>

namespace kurvo_cli {

// Its texts come from the allocator of the table that holds it (a reader's
// arena), so a query over thousands of files costs no allocation per record.
struct FileRecord {
  using allocator_type = std::pmr::polymorphic_allocator<char>;

  explicit FileRecord(const allocator_type &alloc = {}) : name(alloc), path(alloc) {}
  FileRecord(const FileRecord &other, const allocator_type &alloc = {})
      : parent(other.parent),
        name(other.name, alloc),
        macTime(other.macTime),
        size(other.size),
        deleted(other.deleted),
        pathBuilt(other.pathBuilt),
        found(other.found),
        path(other.path, alloc) {}
  FileRecord(FileRecord &&other, const allocator_type &alloc)
      : parent(other.parent),
        name(std::move(other.name), alloc),
        macTime(other.macTime),
        size(other.size),
        deleted(other.deleted),
        pathBuilt(other.pathBuilt),
        found(other.found),
        path(std::move(other.path), alloc) {}
  FileRecord(FileRecord &&) = default;
  FileRecord &operator=(const FileRecord &) = default;
  FileRecord &operator=(FileRecord &&) = default;

  uint32_t parent = 0;
  std::pmr::string name;
  double macTime = 0;  // seconds since 1904
  uint32_t size = 0;
  bool deleted = false;
  // Worked out once, when first asked for: the record's path (empty where
  // it has none) and whether the file table finds it under its name.
  mutable bool pathBuilt = false;
  mutable signed char found = -1;  // -1 not yet asked
  mutable std::pmr::string path;
};

// Polymorphic, so that a reader can keep its records in an arena of its own.
using RecordTable = std::pmr::unordered_map<uint32_t, FileRecord>;

// Folder records (parent 0) hold their full path; a file's path is its
// folder's path, "/" and its name; an archive member's is its container's
// path, "::" and its name, nested as deep as the members go.
class RecordPaths {
 public:
  explicit RecordPaths(const RecordTable &records) : m_records(records) {}

  // The path of a live file or member; empty for folders, deleted or unknown
  // records and records whose parent chain is broken or deleted.
  std::string_view filePath(uint32_t record);
  // The live file with that full path, or 0.
  uint32_t findFile(const std::string &path);

 private:
  // Any record's path, a folder's too; empty where there is none.
  std::string_view pathOf(const FileRecord &record, int depth);

  const RecordTable &m_records;
  std::unordered_map<std::string, uint32_t> m_byPath;
  bool m_byPathComplete = false;
};

}  // namespace kurvo_cli
