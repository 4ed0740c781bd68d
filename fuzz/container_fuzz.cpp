// Fuzzes one container analyzer's indexing and extraction with arbitrary bytes as an archive file.
// KURVO_FUZZ_ANALYZER names the analyzer and KURVO_FUZZ_SUFFIX the archive's file name ending.
#include <dirent.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"

namespace {

struct Harness {
  Harness() {
    char pattern[] = "/tmp/kurvo-fuzz-XXXXXX";
    root = mkdtemp(pattern);
    std::system(("mkdir -p " + root + "/a/b/c/ " + root + "/t").c_str());
    index = std::make_unique<CKurvoIndex>(true, root + "/a/b/c/");
    for (int c = 0; c < 256; ++c) {
      index->setValidCharMask(c, (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'));
      index->setValidViewableMask(c, c >= ' ');
    }
    index->MaxPerFileRead = 100000;
    index->temporaryDirectory = root + "/t";
    // Small bounds keep each run quick; the bound logic is the same.
    index->ArchiveMemberLimit = 1 << 20;
    index->ArchiveTotalLimit = 4 << 20;
    index->createAnalyzers();
    const char *patterns[][2] = {{"*.txt", "generic"}, {"*.zip", "zip"}, {"*.tar", "tar"},
                                 {"*.tgz", "gzip"},    {"*.gz", "gzip"},  {"*.mbox", "mbox"}};
    index->setIncludeCount(6);
    for (int i = 0; i < 6; ++i) index->setIncludePattern(i, patterns[i][0], patterns[i][1]);
    analyzer = index->analyzerNamed(KURVO_FUZZ_ANALYZER);
    if (!analyzer) std::abort();
  }

  // A fresh file table now and then, so that records do not pile up.
  void restartEvery(int runs) {
    if (++count % runs != 1) return;
    index->emptyIndex();
    index->newFileLinks();
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
  CFileAnalyzer *analyzer = nullptr;
  int count = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  static Harness h;
  h.restartEvery(500);
  const std::string path = h.root + "/input" KURVO_FUZZ_SUFFIX;
  FILE *file = std::fopen(path.c_str(), "wb");
  if (!file) return 0;
  std::fwrite(data, 1, size, file);
  std::fclose(file);

  const uint32_t record = h.index->files->addFile("input" KURVO_FUZZ_SUFFIX);
  h.analyzer->indexFile(path.c_str(), record);
  // Extract the first member recorded under the archive, and a name that is not there.
  std::string member = "a.txt";
  for (uint32_t n = h.index->files->getFirst(); n; n = h.index->files->getNext(n)) {
    if (file_record::parent(h.index->files->getData(n)) == record) {
      member = file_record::name(h.index->files->getData(n));
      break;
    }
  }
  const std::string out = h.root + "/t/out";
  h.analyzer->extractToTempFile(path.c_str(), member.c_str(), out.c_str(), record);
  h.analyzer->extractToTempFile(path.c_str(), "no such member", out.c_str(), record);
  h.clearTemporaryFolder();
  return 0;
}
