// What the file-level fuzz targets share: a scratch index with small bounds, restarts, and the input as a file.
#pragma once

#include <dirent.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"

// Letters, digits and Latin-1 letters make words; maxPerFileRead small puts
// words and sequences across reads. Small bounds keep each run quick; the
// bound logic is the same.
struct FileFuzzHarness {
  explicit FileFuzzHarness(int maxPerFileRead) {
    char pattern[] = "/tmp/kurvo-fuzz-XXXXXX";
    root = mkdtemp(pattern);
    std::system(("mkdir -p " + root + "/a/b/c/ " + root + "/t").c_str());
    index = std::make_unique<CKurvoIndex>(true, root + "/a/b/c/");
    for (int c = 0; c < 256; ++c) {
      index->setValidCharMask(c, (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c >= 0xC0);
      index->setValidTrailingMask(c, c == '\'');
      index->setValidViewableMask(c, c >= ' ');
    }
    index->MaxPerFileRead = maxPerFileRead;
    index->temporaryDirectory = root + "/t";
    index->ArchiveMemberLimit = 1 << 20;
    index->ArchiveTotalLimit = 4 << 20;
    index->PdfStreamLimit = 1 << 20;
    index->PdfFileLimit = 4 << 20;
    index->createAnalyzers();
  }

  CFileAnalyzer &analyzerNamed(const char *name) {
    CFileAnalyzer *analyzer = index->analyzerNamed(name);
    if (!analyzer) std::abort();
    return *analyzer;
  }

  // A fresh file table now and then, so that records do not pile up.
  void restartEvery(int runs) {
    if (++count % runs != 1) return;
    index->emptyIndex();
    index->newFileLinks();
  }

  // Writes the input to root/name and returns the path ("" when it cannot).
  std::string writeInput(const std::string &name, const void *data, size_t size) {
    const std::string path = root + "/" + name;
    FILE *file = std::fopen(path.c_str(), "wb");
    if (!file) return "";
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    return path;
  }

  // Cache files of mailboxes stay by design; the harness clears them.
  void clearTemporaryFolder() {
    DIR *dir = opendir((root + "/t").c_str());
    if (!dir) return;
    while (dirent *entry = readdir(dir)) {
      if (entry->d_name[0] != '.') std::remove((root + "/t/" + entry->d_name).c_str());
    }
    closedir(dir);
  }

  std::string root;
  std::unique_ptr<CKurvoIndex> index;
  int count = 0;
};
