// Fuzzes the PDF analyzer's indexing and display with arbitrary bytes, as a file and as one deflated content stream.
// The first byte chooses the form, the display size and the line width.
#include <zlib.h>

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
    std::system(("mkdir -p " + root + "/a/b/c/").c_str());
    index = std::make_unique<CKurvoIndex>(true, root + "/a/b/c/");
    for (int c = 0; c < 256; ++c) {
      index->setValidCharMask(c, (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c >= 0xC0);
      index->setValidViewableMask(c, c >= ' ');
    }
    // A small read buffer puts tokens across reads; small bounds keep runs quick.
    index->MaxPerFileRead = 4096;
    index->PdfStreamLimit = 1 << 20;
    index->PdfFileLimit = 4 << 20;
    index->createAnalyzers();
    analyzer = index->analyzerNamed("pdf");
    if (!analyzer) std::abort();
  }

  void restartEvery(int runs) {
    if (++count % runs != 1) return;
    index->emptyIndex();
    index->newFileLinks();
  }

  std::string root;
  std::unique_ptr<CKurvoIndex> index;
  CFileAnalyzer *analyzer = nullptr;
  int count = 0;
};

// The bytes as the page description of a one-stream PDF.
std::string asContentStream(const unsigned char *data, size_t size) {
  uLongf length = compressBound(static_cast<uLong>(size));
  std::string packed(length, '\0');
  compress(reinterpret_cast<Bytef *>(&packed[0]), &length, data, static_cast<uLong>(size));
  packed.resize(length);
  return "%PDF-1.4\n1 0 obj\n<</Filter/FlateDecode>>\nstream\r\n" + packed + "\r\nendstream\nendobj\n";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size) {
  static Harness h;
  if (size == 0) return 0;
  h.restartEvery(500);
  const unsigned char choice = data[0];
  ++data;
  --size;
  const std::string bytes = (choice & 1) ? asContentStream(data, size) : std::string(data, data + size);
  const std::string path = h.root + "/input.pdf";
  FILE *file = std::fopen(path.c_str(), "wb");
  if (!file) return 0;
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);

  h.analyzer->indexFile(path.c_str(), h.index->files->addFile("input.pdf"));
  const unsigned long displaySize = (choice & 2) ? 1u << 16 : (choice >> 2) % 17;
  const int width = (choice & 4) ? 0 : (choice >> 3);
  char *shown = h.analyzer->fillDisplayBuffer(path.c_str(), 1, displaySize, width, true);
  std::free(shown);
  return 0;
}
