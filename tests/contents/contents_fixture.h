// An index with letter-only word classes and stand-in analyzers, for viewer tests.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "contents/file_contents.h"
#include "index/kurvo_index.h"
#include "storage/file_storage.h"
#include "test_support.h"

namespace contents_test {

// Shows a fixed text and notes the bytes of each file it was
// asked for, as they were at that moment.
class FixedTextAnalyzer : public CFileAnalyzer {
 public:
  FixedTextAnalyzer(CKurvoIndex *index, std::string text) : CFileAnalyzer(index), m_text(std::move(text)) {}

  char *fillDisplayBuffer(const char *path, unsigned long, unsigned long, int, bool) override {
    seenBytes.push_back(kurvo_test::readFile(path));
    return strdup(m_text.c_str());
  }

  std::vector<std::string> seenBytes;

 private:
  std::string m_text;
};

// An archive whose members are written as "member <name> of <archive bytes>".
class FakeArchiveAnalyzer : public CFileAnalyzer {
 public:
  explicit FakeArchiveAnalyzer(CKurvoIndex *index, bool fail = false) : CFileAnalyzer(index), m_fail(fail) {}

  bool extractToTempFile(const char *archivePath, const char *memberName, const char *tempPath,
                         unsigned long memberNumber) override {
    calls.push_back({archivePath, tempPath, memberNumber, std::ifstream(archivePath).good()});
    if (m_fail) return false;
    kurvo_test::writeFile(tempPath, std::string("member ") + memberName + " of " + kurvo_test::readFile(archivePath));
    return true;
  }

  struct Call {
    std::string archivePath, tempPath;
    unsigned long memberNumber;
    bool archiveExisted;
  };
  std::vector<Call> calls;

 private:
  bool m_fail;
};

class ContentsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    index = std::make_unique<CKurvoIndex>(true, dir.path());
    for (int c = 0; c < 256; ++c) {
      bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
      index->setValidCharMask(c, letter);
      index->setValidTrailingMask(c, letter);
      index->setValidViewableMask(c, c >= 32 && c < 127);
      index->setNonAlphaCharMask(c, false);
    }
    index->temporaryDirectory = dir.path() + "tmp";
    kurvo_test::writeFile(index->temporaryDirectory + "/.keep", "");
    folderPath = dir.path() + "docs";
    folder = addRecord(folderPath, 0);
  }

  // The index owns the analyzer and deletes the one it replaces.
  template <typename A>
  A *install(const std::string &name, A *analyzer) {
    CFileAnalyzer *&slot = index->analyzers[name];
    delete slot;
    slot = analyzer;
    return analyzer;
  }

  FixedTextAnalyzer *showText(const std::string &text) {
    return install("generic", new FixedTextAnalyzer(index.get(), text));
  }

  uint32_t addRecord(const std::string &name, uint32_t parent) {
    uint32_t number = index->files->addFile(name.c_str());
    file_record::setParent(index->files->getData(number), parent);
    return number;
  }

  // A file in the docs folder, on disk and in the table.
  uint32_t addFile(const std::string &name, const std::string &bytes = "bytes\n") {
    kurvo_test::writeFile(folderPath + "/" + name, bytes);
    return addRecord(name, folder);
  }

  std::unique_ptr<CFileContents> open(uint32_t fileNumber, int distance = 5) {
    return std::make_unique<CFileContents>(index.get(), fileNumber, 100000, 0, false, distance);
  }

  kurvo_test::TempDir dir;
  kurvo_test::CapturedMessages messages;
  std::unique_ptr<CKurvoIndex> index;
  std::string folderPath;
  uint32_t folder = 0;
};

}  // namespace contents_test
