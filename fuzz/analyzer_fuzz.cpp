// Fuzzes the plain-text word cutter and display-text maker with arbitrary buffers.
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "analyzers/file_analyzer.h"
#include "index/kurvo_index.h"

namespace {

struct Harness {
  Harness() {
    char pattern[] = "/tmp/kurvo-fuzz-XXXXXX";
    std::string root = mkdtemp(pattern);
    std::string store = root + "/a/b/c/";
    std::system(("mkdir -p " + store).c_str());
    index = std::make_unique<CKurvoIndex>(true, store);
    for (int c = 0; c < 256; ++c) {
      index->setValidCharMask(c, (c >= 'a' && c <= 'z') || c >= 0xC0);
      index->setValidTrailingMask(c, c == '\'' || c == '-');
      index->setValidViewableMask(c, c >= ' ');
      index->setNonAlphaCharMask(c, c >= '0' && c <= '9');
    }
    index->newFileLinks();
    analyzer = std::make_unique<CFileAnalyzer>(index.get());
    file = index->files->addFile("fuzz.txt");
  }
  std::unique_ptr<CKurvoIndex> index;
  std::unique_ptr<CFileAnalyzer> analyzer;
  uint32_t file = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  static Harness harness;
  // The analyzers may look one byte past the data: give them a spare NUL.
  std::vector<char> buffer(data, data + size);
  buffer.push_back('\0');
  std::vector<char> display(buffer);
  harness.index->partialWord[0] = '\0';
  harness.analyzer->indexBuffer(buffer.data(), size, harness.file, true);

  std::vector<char> output(2 * size + 2);
  int state = 0;
  harness.index->partialWord[0] = '\0';
  harness.analyzer->stripBuffer(display.data(), size, output.data(), output.size(), 40, true, true,
                                &state);
  return 0;
}
