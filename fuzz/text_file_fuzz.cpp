// Fuzzes a whole-file analyzer ("utf8" or "auto") with arbitrary bytes as a file: indexing and display.
// KURVO_FUZZ_ANALYZER names it; auto may hand the file to any container or document analyzer.
#include "file_fuzz_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  static FileFuzzHarness h(3000);
  static bool patterns = [] {
    h.index->setIncludeCount(1);
    h.index->setIncludePattern(0, "*", "auto");
    return true;
  }();
  if (size == 0 || !patterns) return 0;
  h.restartEvery(500);
  const unsigned char choice = data[0];
  const std::string path = h.writeInput("input", data + 1, size - 1);
  if (path.empty()) return 0;

  CFileAnalyzer &analyzer = h.analyzerNamed(KURVO_FUZZ_ANALYZER);
  analyzer.indexFile(path.c_str(), h.index->files->addFile("input"));
  char *shown = analyzer.fillDisplayBuffer(path.c_str(), 1, (choice & 1) ? 1u << 16 : choice % 37,
                                           (choice & 2) ? 0 : choice >> 2, true);
  std::free(shown);
  h.clearTemporaryFolder();
  return 0;
}
