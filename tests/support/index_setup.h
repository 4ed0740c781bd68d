// Test helpers for whole indexing runs: index setup, folder trees with set times, table readers.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "index/kurvo_index.h"
#include "storage/byte_io.h"
#include "test_support.h"

namespace kurvo_test {

// Sets a path's modification (and access) time without following links.
inline void setMTime(const std::string &path, int32_t seconds) {
  struct timespec times[2];
  times[0].tv_sec = seconds;
  times[0].tv_nsec = 0;
  times[1] = times[0];
  utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

inline int32_t mtimeOf(const std::string &path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? static_cast<int32_t>(info.st_mtime) : -1;
}

// The folder above TempDir's "a/b/c/store/" chain, with a trailing '/'. Its
// "a" child is the index's skipped folder.
inline std::string scratchRoot(const TempDir &tmp) {
  const std::string &p = tmp.path();
  return p.substr(0, p.size() - std::string("a/b/c/store/").size());
}

// Letters and digits make words; everything else separates them.
inline void setWordMasks(CKurvoIndex &index) {
  for (int c = 0; c < 256; ++c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool digit = c >= '0' && c <= '9';
    index.setValidCharMask(c, letter || digit);
    index.setValidTrailingMask(c, false);
    index.setValidViewableMask(c, c >= 32 && c < 127);
    index.setNonAlphaCharMask(c, digit);
  }
}

// Everything a run needs before its folders are walked: masks, limits, the
// analyzers, "*.txt" -> "generic" and the given exclude patterns.
inline void configureIndex(CKurvoIndex &index, const std::vector<std::string> &excludes = {}) {
  setWordMasks(index);
  index.MaxPerFileRead = 1000000;
  index.ShowStatus = 0;
  index.createAnalyzers();
  index.setIncludeCount(1);
  index.setIncludePattern(0, "*.txt", "generic");
  index.setExcludeCount(static_cast<int>(excludes.size()));
  for (size_t i = 0; i < excludes.size(); ++i) index.setExcludePattern(static_cast<int>(i), excludes[i].c_str());
}

// A fresh index in tmp's storage folder, ready for indexDirectory; the skip
// file holds skipWords, one a line.
inline std::unique_ptr<CKurvoIndex> startFullBuild(const TempDir &tmp, const std::string &skipWords = "",
                                                   const std::vector<std::string> &excludes = {}) {
  auto index = std::make_unique<CKurvoIndex>(true, tmp.path());
  configureIndex(*index, excludes);
  index->emptyIndex();
  index->newFileLinks();
  index->skipFilePath = tmp.path() + "skipfile.txt";
  writeFile(index->skipFilePath, skipWords);
  index->indexExclusions();
  return index;
}

// Records a top folder the way a host does: full path, parent 0, its time.
inline uint32_t addTopFolder(CKurvoIndex &index, const std::string &path) {
  const uint32_t record = index.files->addFile(path.c_str());
  char *data = index.files->getData(record);
  file_record::setParent(data, 0);
  file_record::setTime(data, mtimeOf(path));
  file_record::setAttributes(data, 0);
  return record;
}

struct RecordCopy {
  uint32_t number;
  uint32_t parent;
  int32_t time;
  uint32_t size;
  uint32_t attributes;
  std::string name;
};

// Records keyed by where they stand: a folder by its path, a file by its
// folder's path + "/" + its stored name (0xFF first for deleted ones).
inline std::map<std::string, RecordCopy> recordsByPath(const CFileStorage &files) {
  std::map<std::string, RecordCopy> out;
  for (uint32_t n = files.getFirst(); n; n = files.getNext(n)) {
    const char *data = files.getData(n);
    const uint32_t parent = file_record::parent(data);
    const std::string name = file_record::name(data);
    out.emplace(
        parent ? std::string(files.getText(parent)) + "/" + name : name,
        RecordCopy{n, parent, file_record::time(data), file_record::size(data), file_record::attributes(data), name});
  }
  return out;
}

using FileLink = std::pair<uint32_t, unsigned>;  // file number, count byte

// A word's files as a host reads them: the current file from the word data,
// then each block from its list position up to the 0 slot, newest block first.
struct WordFiles {
  uint32_t current = 0;
  unsigned counter = 0;
  std::vector<std::vector<FileLink>> blocks;
  bool operator==(const WordFiles &o) const {
    return current == o.current && counter == o.counter && blocks == o.blocks;
  }
};

inline WordFiles readWordFiles(const CKurvoIndex &index, uint32_t word) {
  WordFiles out;
  const char *data = index.words->getData(word);
  out.current = load32(data + word_data::kCurrentFile);
  out.counter = load16(data + word_data::kCounter);
  uint32_t position = load32(data + word_data::kListPosition);
  while (position && out.blocks.size() < 100) {
    std::vector<FileLink> block;
    for (;;) {
      unsigned char count = 0;
      const uint32_t file = index.links->getFile(position, count);
      if (!file) break;
      block.push_back({file, count});
    }
    out.blocks.push_back(block);
    position = index.links->getNextList(position);
  }
  return out;
}

// Whole runs over the folder "tree" beside the storage chain.
class IndexRunTest : public ::testing::Test {
 protected:
  void SetUp() override { top = scratchRoot(tmp) + "tree"; }
  void start(const std::vector<std::string> &excludes = {}) {
    index = startFullBuild(tmp, "", excludes);
    topRecord = addTopFolder(*index, top);
  }
  std::map<std::string, RecordCopy> records() const { return recordsByPath(*index->files); }
  bool hasWord(const char *word) const { return index->words->lookup(word) != 0; }

  CapturedMessages messages;
  TempDir tmp;
  std::string top;
  std::unique_ptr<CKurvoIndex> index;
  uint32_t topRecord = 0;
};

inline std::map<std::string, uint32_t> allWords(const CTextStorage &words) {
  std::map<std::string, uint32_t> out;
  for (uint32_t w = words.getFirst(); w; w = words.getNext(w)) out[words.getText(w)] = w;
  return out;
}

}  // namespace kurvo_test
