// Fuzzes one container analyzer's indexing and extraction with arbitrary bytes as an archive file.
// KURVO_FUZZ_ANALYZER names the analyzer and KURVO_FUZZ_SUFFIX the archive's file name ending.
#include "file_fuzz_harness.h"

namespace {

// Members are read by the analyzers of their names.
FileFuzzHarness &harness() {
  static FileFuzzHarness h(100000);
  static bool patterns = [] {
    const char *rules[][2] = {{"*.txt", "generic"}, {"*.zip", "zip"}, {"*.tar", "tar"},
                              {"*.tgz", "gzip"},    {"*.gz", "gzip"}, {"*.mbox", "mbox"}};
    h.index->setIncludeCount(6);
    for (int i = 0; i < 6; ++i) h.index->setIncludePattern(i, rules[i][0], rules[i][1]);
    return true;
  }();
  (void)patterns;
  return h;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  FileFuzzHarness &h = harness();
  h.restartEvery(500);
  const std::string path = h.writeInput("input" KURVO_FUZZ_SUFFIX, data, size);
  if (path.empty()) return 0;

  CFileAnalyzer &analyzer = h.analyzerNamed(KURVO_FUZZ_ANALYZER);
  const uint32_t record = h.index->files->addFile("input" KURVO_FUZZ_SUFFIX);
  analyzer.indexFile(path.c_str(), record);
  // Extract the first member recorded under the archive, and a name that is not there.
  std::string member = "a.txt";
  for (uint32_t n = h.index->files->getFirst(); n; n = h.index->files->getNext(n)) {
    if (file_record::parent(h.index->files->getData(n)) == record) {
      member = file_record::name(h.index->files->getData(n));
      break;
    }
  }
  const std::string out = h.root + "/t/out";
  analyzer.extractToTempFile(path.c_str(), member.c_str(), out.c_str(), record);
  analyzer.extractToTempFile(path.c_str(), "no such member", out.c_str(), record);
  h.clearTemporaryFolder();
  return 0;
}
