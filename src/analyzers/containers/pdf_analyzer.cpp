// CPdfAnalyzer: the scan for compressed streams, their collection and inflation, for indexing and display.
#include "analyzers/containers/pdf_analyzer.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

#include "analyzers/c_handles.h"
#include "analyzers/containers/pdf_text.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"

namespace {

constexpr uint32_t kLargestRead = 65535;
constexpr char kEndStream[] = "endstream";
constexpr uint32_t kEndStreamLength = sizeof kEndStream - 1;
// Indexing never wraps in practice; display passes the viewer's width.
constexpr int kIndexLineWidth = 10000;

}  // namespace

CPdfAnalyzer::CPdfAnalyzer(CKurvoIndex *index) : CFileAnalyzer(index) {
  const int32_t setting = index->MaxPerFileRead;
  readBufferSize = setting <= 0 ? 0 : std::min(static_cast<uint32_t>(setting), kLargestRead);
  readBuffer = static_cast<char *>(std::malloc(readBufferSize + 1));
}

CPdfAnalyzer::~CPdfAnalyzer() {
  std::free(readBuffer);
  std::free(streamData);
}

bool CPdfAnalyzer::canUseIndexBuffer() { return false; }

bool CPdfAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  return processFile(path, static_cast<uint32_t>(fileNumber), nullptr, 0, kIndexLineWidth);
}

char *CPdfAnalyzer::fillDisplayBuffer(const char *path, unsigned long, unsigned long maxLength, int wrapWidth, bool) {
  const uint32_t size = static_cast<uint32_t>(std::min<unsigned long>(maxLength, UINT32_MAX - 1));
  // Zero-filled with a spare byte, so that the text ends in NUL even when it fills the block.
  char *buffer = static_cast<char *>(std::calloc(size + 1, 1));
  if (!buffer) throwKurvoError(kurvo_keys::kNoMemory, "");
  try {
    processFile(path, 0, buffer, size, wrapWidth);
  } catch (...) {
    std::free(buffer);
    throw;
  }
  return buffer;
}

bool CPdfAnalyzer::processFile(const char *path, uint32_t fileId, char *outBuffer, uint32_t outSize, int lineWidth) {
  file = std::fopen(path, "rb");
  if (!file) return false;
  currentPath = path;
  CKurvoIndex &index = *m_pIndex;
  time_t statusTime = std::time(nullptr);
  fileInflated = 0;
  limitReported = false;
  index.partialWord[0] = '\0';

  const bool filling = outBuffer != nullptr;
  uint32_t outUsed = 0;
  bool firstChunk = true;
  try {
    if (readBuffer && readNextBuffer() != 0) {
      while (findNextToken("FlateDecode")) {
        if (std::time(nullptr) > statusTime) {
          if (setStatus(kurvo_keys::kDecodingPdf, path) == 0) break;
          statusTime = std::time(nullptr);
        }
        if (!findNextToken("stream")) {
          if (filling && outUsed >= outSize) break;
          continue;
        }
        // A stream without its end, or no memory to hold it, ends the scan.
        if (!getStreamBuffer()) break;
        decodeStream(fileId, outBuffer, outSize, outUsed, lineWidth, firstChunk);
        freeStream();
        if (filling && outUsed >= outSize) break;
        if (fileInflated >= index.PdfFileLimit) {
          reportLimit();
          break;
        }
      }
    }
  } catch (...) {
    freeStream();
    std::fclose(file);
    file = nullptr;
    throw;
  }
  freeStream();
  std::fclose(file);
  file = nullptr;
  setStatus("", "");
  // The word pending at the end is not indexed: text blocks end in a line break.
  if (!filling) index.ContentsIndexed += 1;
  return true;
}

void CPdfAnalyzer::decodeStream(uint32_t fileId, char *outBuffer, uint32_t outSize, uint32_t &outUsed, int lineWidth,
                                bool &firstChunk) {
  uint32_t inflated = 0;
  MallocBlock block(inflateStream(inflated));
  if (!block) return;
  // Text is never longer than its input and the byte examined after it;
  // one more byte ends it for the word cutter.
  MallocBlock text(static_cast<char *>(std::malloc(static_cast<size_t>(inflated) + 2)));
  if (!text) return;
  const uint32_t length = clearText(block.get(), inflated, text.get(), inflated + 1, lineWidth);
  text.get()[length] = '\0';
  if (!outBuffer) {
    indexBuffer(text.get(), length, fileId, firstChunk);
    firstChunk = false;
    return;
  }
  const uint32_t copied = std::min(length, outSize - outUsed);
  std::memcpy(outBuffer + outUsed, text.get(), copied);
  outUsed += copied;
}

char *CPdfAnalyzer::inflateStream(uint32_t &inflated) {
  // The end-of-line after "stream" and the closing keyword are left out, as
  // far as the rules below go; input past the compressed data is harmless,
  // since inflation stops at the end of the zlib stream.
  const char *start = streamData;
  int64_t length = static_cast<int64_t>(streamLength) - kEndStreamLength;
  if (streamLength >= 2 && start[0] == '\r' && start[1] == '\n') {
    start += 2;
    length = static_cast<int64_t>(streamLength) - kEndStreamLength - 2;
  } else if (streamLength >= 1 && (start[0] == '\r' || start[0] == '\n')) {
    start += 1;
    length += 1;
  }
  const char *end = start + std::max<int64_t>(length, 0);
  if (end < streamData + streamLength) {
    if (length >= 1 && end[-1] == '\r' && end[0] == '\n')
      length -= 2;
    else if (end[0] == '\n')
      length -= 1;
  }
  length = std::max<int64_t>(length, 0);

  z_stream zs{};
  zs.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(start));
  zs.avail_in = static_cast<uInt>(length);
  // A zlib-wrapped stream with the default window.
  if (inflateInit(&zs) != Z_OK) return nullptr;

  CKurvoIndex &index = *m_pIndex;
  const uint64_t limit = std::min(index.PdfStreamLimit, index.PdfFileLimit - fileInflated);
  size_t size = static_cast<size_t>(std::min<uint64_t>(3ull * streamLength, limit));
  // One spare byte: the text scan examines the byte after the data.
  MallocBlock block(static_cast<char *>(std::malloc(size + 1)));
  int result = Z_MEM_ERROR;
  if (block) {
    zs.next_out = reinterpret_cast<Bytef *>(block.get());
    zs.avail_out = static_cast<uInt>(size);
    // The output grows threefold while it runs full, up to the bound.
    while ((result = inflate(&zs, Z_SYNC_FLUSH)) == Z_OK && zs.avail_out == 0) {
      if (size >= limit) {
        reportLimit();
        break;
      }
      const size_t grown = static_cast<size_t>(std::min<uint64_t>(3ull * size, limit));
      MallocBlock bigger(static_cast<char *>(std::malloc(grown + 1)));
      if (!bigger) {
        result = Z_MEM_ERROR;
        break;
      }
      std::memcpy(bigger.get(), block.get(), size);
      block = std::move(bigger);
      zs.next_out = reinterpret_cast<Bytef *>(block.get() + size);
      zs.avail_out = static_cast<uInt>(grown - size);
      size = grown;
    }
  }
  inflated = static_cast<uint32_t>(zs.total_out);
  inflateEnd(&zs);
  if (result < 0) return nullptr;
  block.get()[inflated] = '\0';
  fileInflated += inflated;
  return block.release();
}

uint32_t CPdfAnalyzer::readNextBuffer() {
  readCount = static_cast<uint32_t>(std::fread(readBuffer, 1, readBufferSize, file));
  readPos = 0;
  return readCount;
}

// A naive matcher: after a mismatch it starts the token again at the next
// byte, so a token that begins inside a partial match is missed there.
bool CPdfAnalyzer::findNextToken(const char *token) {
  const char *expected = token;
  for (;;) {
    if (readPos >= readCount && readNextBuffer() == 0) return false;
    const char c = readBuffer[readPos++];
    if (c != *expected) {
      expected = token;
    } else if (*++expected == '\0') {
      return true;
    }
  }
}

// Collects everything up to and including the next "endstream".
bool CPdfAnalyzer::getStreamBuffer() {
  freeStream();
  const char *expected = kEndStream;
  uint32_t runStart = readPos;
  for (;;) {
    if (readPos >= readCount) {
      if (!addToDeflateBuffer(runStart, readCount)) return false;
      if (readNextBuffer() == 0) {
        freeStream();
        return false;
      }
      runStart = 0;
    }
    const char c = readBuffer[readPos++];
    if (c != *expected) {
      expected = kEndStream;
    } else if (*++expected == '\0') {
      return addToDeflateBuffer(runStart, readPos);
    }
  }
}

// Appends readBuffer[first, end) to the stream. Bytes past the stream bound
// are left out; false (and no stream) when memory runs out.
bool CPdfAnalyzer::addToDeflateBuffer(uint32_t first, uint32_t end) {
  uint64_t count = end - first;
  const uint64_t limit = m_pIndex->PdfStreamLimit;
  if (streamLength + count > limit) {
    reportLimit();
    count = limit > streamLength ? limit - streamLength : 0;
  }
  if (count == 0) return true;
  if (streamLength + count > streamCapacity) {
    const uint64_t wanted = std::max<uint64_t>(streamLength + count, 2ull * streamCapacity);
    const uint32_t capacity = static_cast<uint32_t>(std::min<uint64_t>({wanted, limit, UINT32_MAX}));
    char *grown = static_cast<char *>(std::realloc(streamData, capacity));
    if (!grown) {
      freeStream();
      return false;
    }
    streamData = grown;
    streamCapacity = capacity;
  }
  std::memcpy(streamData + streamLength, readBuffer + first, static_cast<size_t>(count));
  streamLength += static_cast<uint32_t>(count);
  return true;
}

void CPdfAnalyzer::freeStream() {
  std::free(streamData);
  streamData = nullptr;
  streamLength = 0;
  streamCapacity = 0;
}

void CPdfAnalyzer::reportLimit() {
  if (limitReported) return;
  limitReported = true;
  setStatus(kurvo_keys::kPdfTooLarge, currentPath);
}
