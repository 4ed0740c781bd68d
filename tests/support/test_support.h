// The one test support layer: scratch folders, callback capture, table readers and the index fixtures.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <ostream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"
#include "storage/byte_io.h"
#include "storage/file_storage.h"

namespace kurvo_test {

// A fresh folder "a/b/c/store/" under $KURVO_TEST_TMP or /tmp, deep enough for the storage-path rules (four '/'
// from the end); removed with everything in it when the object goes.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir &) = delete;
  TempDir &operator=(const TempDir &) = delete;

  const std::string &path() const { return m_path; }  // ends in "/"
  std::string file(const std::string &name) const { return m_path + name; }
  // Creates subfolders as needed.
  void write(const std::string &name, const std::string &bytes) const;
  std::string read(const std::string &name) const;

 private:
  std::string m_path;
};

std::string readFile(const std::string &path);
void writeFile(const std::string &path, const std::string &bytes);
bool exists(const std::string &path);

struct Message {
  std::string key;
  std::string argument;
  bool operator==(const Message &o) const { return key == o.key && argument == o.argument; }
};
inline std::ostream &operator<<(std::ostream &out, const Message &m) {
  return out << m.key << " (" << m.argument << ")";
}

// Installs recording callbacks for the life of the object; statusAnswer is what the status callback returns.
class CapturedMessages {
 public:
  CapturedMessages();
  ~CapturedMessages();

  std::vector<Message> errors;
  std::vector<Message> warnings;
  std::vector<Message> statuses;
  std::vector<int> statusFromLibrary;
  int statusAnswer = 1;
  // Answer 0 from the n-th status on (1-based); 0 disables.
  int haltAtStatus = 0;
  // How long each status takes the host, to let other threads get ahead.
  int statusMicroseconds = 0;

  const Message *lastError() const { return errors.empty() ? nullptr : &errors.back(); }
};

// Runs f and returns true when it threw the library's exception, the int 1.
template <typename F>
bool throwsKurvo(F &&f) {
  try {
    f();
  } catch (int value) {
    return value == 1;
  }
  return false;
}

// Runs f and returns the error it raised through the callback, or "nothing raised" when it did not throw.
template <typename F>
Message raised(const CapturedMessages &messages, F &&f) {
  if (!throwsKurvo(f) || messages.errors.empty()) return {"nothing raised", ""};
  return messages.errors.back();
}

// ---- Stored tables ----

// An anonymous temporary stream for table descriptions, closed on destruction.
class Stream {
 public:
  Stream() : m_file(std::tmpfile()) {}
  ~Stream() { std::fclose(m_file); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  FILE *get() const { return m_file; }
  void rewind() const { std::rewind(m_file); }
  std::string bytes() const;  // everything written so far; leaves the stream at its end

 private:
  FILE *m_file;
};

inline uint32_t wordAt(const std::string &bytes, size_t offset) { return load32(bytes.data() + offset); }
// The host-order bytes of the given words, back to back.
std::string wordBytes(const std::vector<uint32_t> &words);

// Opening Table from path with each description must raise "StorageReadError" naming path.
template <typename Table>
void expectBadDescriptions(const std::string &path, const std::vector<std::vector<uint32_t>> &descriptions) {
  for (const std::vector<uint32_t> &words : descriptions) {
    Stream s;
    const std::string bytes = wordBytes(words);
    std::fwrite(bytes.data(), 1, bytes.size(), s.get());
    s.rewind();
    CapturedMessages msgs;
    EXPECT_EQ(raised(msgs, [&] { Table t(path, s.get()); }), (Message{"StorageReadError", path})) << words.size();
  }
}

// ---- Index runs ----

// Sets a path's modification (and access) time without following links.
void setMTime(const std::string &path, int32_t seconds);
int32_t mtimeOf(const std::string &path);

// The folder above TempDir's "a/b/c/store/" chain, with a trailing '/'; its "a" is the index's skipped folder.
std::string scratchRoot(const TempDir &tmp);

// Letters and digits make words; printable ASCII is shown; digits are non-alpha.
void setWordMasks(CKurvoIndex &index);

// Everything a run needs before its walk: masks, limits, analyzers, "*.txt" -> "generic" and these excludes.
void configureIndex(CKurvoIndex &index, const std::vector<std::string> &excludes = {});

// A fresh index in tmp's storage folder, ready for indexDirectory; the skip file holds skipWords, one a line.
std::unique_ptr<CKurvoIndex> startFullBuild(const TempDir &tmp, const std::string &skipWords = "",
                                            const std::vector<std::string> &excludes = {});

// Records a top folder the way a host does: full path, parent 0, its time.
uint32_t addTopFolder(CKurvoIndex &index, const std::string &path);

struct RecordCopy {
  uint32_t number;
  uint32_t parent;
  int32_t time;
  uint32_t size;
  uint32_t attributes;
  std::string name;
};

// Records keyed by where they stand: a folder by its path, a file by its folder's path + "/" + its stored name.
std::map<std::string, RecordCopy> recordsByPath(const CFileStorage &files);

using FileLink = std::pair<uint32_t, unsigned>;  // file number, count byte

// A word's files as a host reads them: the current file from the word data, then each block, newest first.
struct WordFiles {
  uint32_t current = 0;
  unsigned counter = 0;
  std::vector<std::vector<FileLink>> blocks;
  bool operator==(const WordFiles &o) const {
    return current == o.current && counter == o.counter && blocks == o.blocks;
  }
};
// Failures show a word's files as "current/counter [file:count ...] [...]".
inline std::ostream &operator<<(std::ostream &out, const WordFiles &w) {
  out << w.current << '/' << w.counter;
  for (const auto &block : w.blocks) {
    out << " [";
    for (const auto &[file, count] : block) out << ' ' << file << ':' << count;
    out << " ]";
  }
  return out;
}
WordFiles readWordFiles(const CKurvoIndex &index, uint32_t word);

std::map<std::string, uint32_t> allWords(const CTextStorage &words);
std::set<std::string> wordSet(const CTextStorage &words);

// A display block from an analyzer, freed.
std::string displayText(CFileAnalyzer &analyzer, uint32_t file, const std::string &path,
                        unsigned long maxLength = 1 << 20, int width = 0, bool displayFlag = true);

// ---- Fixtures ----

// One analyzer's work: ASCII letters and digits make words, '!' to '~' are shown, "doc.txt" is record fileNumber.
class AnalyzerTest : public ::testing::Test {
 protected:
  // Called again by table tests to start each case afresh.
  void SetUp() override;

  std::set<std::string> words() const { return wordSet(*index->words); }
  // Cuts text as one buffer of the current file.
  void cut(std::string text);
  std::string dataFile(const std::string &name, const std::string &bytes) const;
  // The words the named analyzer finds in path, on a fresh index.
  std::set<std::string> wordsOf(const std::string &analyzerName, const std::string &path);

  TempDir store;
  TempDir data;
  std::unique_ptr<CKurvoIndex> index;
  std::unique_ptr<CFileAnalyzer> analyzer;
  uint32_t fileNumber = 0;
};

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
  // Which of these paths below top have records, and which words are indexed.
  std::set<std::string> recordedAmong(std::set<std::string> paths) const {
    const auto found = records();
    for (auto it = paths.begin(); it != paths.end();) it = found.count(top + *it) ? std::next(it) : paths.erase(it);
    return paths;
  }
  std::set<std::string> indexedAmong(std::set<std::string> words) const {
    for (auto it = words.begin(); it != words.end();) it = hasWord(it->c_str()) ? std::next(it) : words.erase(it);
    return words;
  }

  CapturedMessages messages;
  TempDir tmp;
  std::string top;
  std::unique_ptr<CKurvoIndex> index;
  uint32_t topRecord = 0;
};

}  // namespace kurvo_test
