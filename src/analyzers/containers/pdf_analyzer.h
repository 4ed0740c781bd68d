// CPdfAnalyzer: the words of a PDF, from the text operators of its compressed content streams.
#pragma once

#include <cstdint>
#include <cstdio>

#include "analyzers/file_analyzer.h"

// No PDF parser: the raw file is scanned for "FlateDecode", the stream after
// it is inflated and its text strings are read out (pdf_text.h). Fonts,
// encodings, object streams and other filters are not understood. One pass
// serves both indexing and display.
class CPdfAnalyzer : public CFileAnalyzer {
 public:
  explicit CPdfAnalyzer(CKurvoIndex *index);
  ~CPdfAnalyzer() override;

  bool canUseIndexBuffer() override;
  bool indexFile(const char *path, unsigned long fileNumber) override;
  // A block of maxLength + 1 bytes, always NUL-terminated; the caller frees it.
  char *fillDisplayBuffer(const char *path, unsigned long fileNumber, unsigned long maxLength, int wrapWidth,
                          bool displayFlag) override;

  // Indexes fileId (outBuffer null) or writes up to outSize bytes of text to
  // outBuffer; false when the file cannot be opened.
  bool processFile(const char *path, uint32_t fileId, char *outBuffer, uint32_t outSize, int lineWidth);

 private:
  uint32_t readNextBuffer();
  bool findNextToken(const char *token);
  bool getStreamBuffer();
  bool addToDeflateBuffer(uint32_t first, uint32_t last);
  void freeStream();
  // Inflates the collected stream and hands its text on.
  void decodeStream(uint32_t fileId, char *outBuffer, uint32_t outSize, uint32_t &outUsed, int lineWidth,
                    bool &firstChunk);
  // A malloc'ed block with the inflated bytes and a spare NUL, or null.
  char *inflateStream(uint32_t &inflated);
  void reportLimit();

  FILE *file = nullptr;
  char *readBuffer = nullptr;
  uint32_t readBufferSize = 0;
  uint32_t readPos = 0;
  char *streamData = nullptr;
  uint32_t streamLength = 0;
  uint32_t readCount = 0;
  // Beyond the fields above: room in streamData, the file being read, the
  // bytes inflated from it and whether its bounds were reported.
  uint32_t streamCapacity = 0;
  const char *currentPath = nullptr;
  uint64_t fileInflated = 0;
  bool limitReported = false;
};
