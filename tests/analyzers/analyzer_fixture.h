// A fresh index with plain-text character classes and a generic analyzer, for analyzer tests.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <set>
#include <string>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"
#include "test_support.h"

namespace kurvo_test {

class AnalyzerTest : public ::testing::Test {
 protected:
  // Letters and digits make words; printable ASCII is shown; nothing trails.
  // Called again by table tests to start each case afresh.
  void SetUp() override {
    analyzer.reset();
    index.reset();
    index = std::make_unique<CKurvoIndex>(true, store.path());
    for (int c = 0; c < 256; ++c) {
      index->setValidCharMask(c, c < 128 && std::isalnum(c));
      index->setValidViewableMask(c, c > ' ' && c < 127);
    }
    index->MaxPerFileRead = 1 << 20;
    index->ShowStatus = 0;
    index->newFileLinks();
    analyzer = std::make_unique<CFileAnalyzer>(index.get());
    fileNumber = index->files->addFile("doc.txt");
  }

  std::set<std::string> words() const {
    std::set<std::string> found;
    for (uint32_t w = index->words->getFirst(); w != 0; w = index->words->getNext(w))
      found.insert(index->words->getText(w));
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
