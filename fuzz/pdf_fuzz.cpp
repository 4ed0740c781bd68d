// Fuzzes the PDF analyzer's indexing and display with arbitrary bytes, as a file and as one deflated content stream.
// The first byte chooses the form, the display size and the line width.
#include <zlib.h>

#include "file_fuzz_harness.h"

namespace {

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
  // A small read buffer puts tokens across reads.
  static FileFuzzHarness h(4096);
  if (size == 0) return 0;
  h.restartEvery(500);
  const unsigned char choice = data[0];
  ++data;
  --size;
  const std::string bytes = (choice & 1) ? asContentStream(data, size) : std::string(data, data + size);
  const std::string path = h.writeInput("input.pdf", bytes.data(), bytes.size());
  if (path.empty()) return 0;

  CFileAnalyzer &pdf = h.analyzerNamed("pdf");
  pdf.indexFile(path.c_str(), h.index->files->addFile("input.pdf"));
  const unsigned long displaySize = (choice & 2) ? 1u << 16 : (choice >> 2) % 17;
  const int width = (choice & 4) ? 0 : (choice >> 3);
  char *shown = pdf.fillDisplayBuffer(path.c_str(), 1, displaySize, width, true);
  std::free(shown);
  return 0;
}
