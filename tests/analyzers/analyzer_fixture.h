// A fresh index with plain-text character classes and a generic analyzer, for analyzer tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"
#include "test_support.h"

namespace kurvo_test {

// Letters and digits make words; printable ASCII is shown; nothing trails and
// nothing is non-alpha unless a test says so.
inline void setPlainTextMasks(CKurvoIndex &index) {
  for (int c = 0; c < 256; ++c) {
    const bool alnum = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    index.setValidCharMask(c, alnum);
    index.setValidTrailingMask(c, false);
    index.setValidViewableMask(c, c > ' ' && c < 127);
    index.setNonAlphaCharMask(c, false);
  }
}

class AnalyzerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    index = std::make_unique<CKurvoIndex>(true, store.path());
    setPlainTextMasks(*index);
    index->MaxPerFileRead = 1 << 20;
    index->ShowStatus = 0;
    index->newFileLinks();
    analyzer = std::make_unique<CFileAnalyzer>(index.get());
    fileNumber = index->files->addFile("doc.txt");
  }

  // Every word in the word table.
  std::set<std::string> words() const {
    std::set<std::string> found;
    for (uint32_t w = index->words->getFirst(); w != 0; w = index->words->getNext(w)) {
      found.insert(index->words->getText(w));
    }
    return found;
  }

  // Cuts text as one buffer of the current file.
  void cut(std::string text) {
    text.push_back('\0');  // spare byte, never part of the data
    analyzer->indexBuffer(text.data(), text.size() - 1, fileNumber, true);
  }

  std::string dataFile(const std::string &name, const std::string &bytes) {
    data.write(name, bytes);
    return data.file(name);
  }

  TempDir store;
  TempDir data;
  std::unique_ptr<CKurvoIndex> index;
  std::unique_ptr<CFileAnalyzer> analyzer;
  uint32_t fileNumber = 0;
};

}  // namespace kurvo_test
