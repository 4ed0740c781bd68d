// Reads a stored index through the exported table functions: file records
// with their full paths, words, and the files each word occurs in.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "record_paths.h"

namespace kurvo_cli {

struct WordFile {
  uint32_t file;
  unsigned countByte;  // occurrences - 1, held at 255 (255 without ranking)
};

class IndexReader {
 public:
  explicit IndexReader(void *index);
  IndexReader(const IndexReader &) = delete;
  IndexReader &operator=(const IndexReader &) = delete;

  // All records, deleted ones included, read on the first call; until then
  // records are read one by one as paths need them.
  const RecordTable &records();
  // One record, or null when the number names none.
  const FileRecord *record(uint32_t number);

  // The full path of a live file or member ("container::member" inside
  // archives); empty when the record is deleted, a folder, unknown, or its
  // parent chain is broken.
  std::string_view filePath(uint32_t record);
  // filePath, after cheap checks that catch most damage to the records on
  // the way: each parent is an earlier record, the file table finds each
  // record under its own name and parent, and the path lies in one of the
  // top folders (when they were set). Throws HostError on damage.
  std::string_view checkedPath(uint32_t record);
  void setTopFolders(const std::vector<std::string> &folders) { m_topFolders = folders; }
  bool isLiveFile(uint32_t record) { return !filePath(record).empty(); }

  // The record of a live file by its full path, or 0 (reads every record).
  uint32_t findFile(const std::string &path);

  // Index words matching a lower-cased term (wildcards expanded).
  std::vector<std::pair<uint32_t, std::string>> matchingWords(const std::string &term);
  // The files of one word, as stored (not filtered); throws HostError when
  // one of them is no record at all (a damaged list).
  std::vector<WordFile> filesOfWord(uint32_t word);

  uint32_t wordCount();

  void *index() const { return m_index; }

 private:
  // The words beginning with prefix, from the index's word order; false when
  // there is none that fits (then every word must be looked at).
  bool wordsWithPrefix(const std::string &prefix, std::vector<uint32_t> &entries);
  bool foundUnderItsName(uint32_t record);

  void *m_index;
  // Records live as long as the reader and go all at once with it.
  std::pmr::monotonic_buffer_resource m_arena;
  RecordTable m_records{&m_arena};
  bool m_allLoaded = false;
  RecordPaths m_paths{m_records};
  std::vector<std::string> m_topFolders;
};

}  // namespace kurvo_cli
