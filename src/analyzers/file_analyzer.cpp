// CFileAnalyzer: reading files for indexing and for display, and the base hooks.
#include "analyzers/file_analyzer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

#include "analyzers/c_handles.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"

using namespace kurvo_keys;

namespace {

// Largest single read of a file, for indexing and for display.
constexpr unsigned long kReadBufferSize = 65535;
// Display output of one read buffer: hooks and line breaks can make it longer
// than its input.
constexpr unsigned long kDisplayWorkSize = 2 * kReadBufferSize;

}  // namespace

CFileAnalyzer::CFileAnalyzer(CKurvoIndex *index) : m_pIndex(index) {}

CFileAnalyzer::~CFileAnalyzer() = default;

bool CFileAnalyzer::canUseIndexBuffer() { return true; }

bool CFileAnalyzer::indexFile(const char *path, unsigned long fileNumber) {
  FileHandle file(std::fopen(path, "rb"));
  if (!file) return false;

  CKurvoIndex &index = *m_pIndex;
  const unsigned long maxRead = index.MaxPerFileRead > 0 ? static_cast<unsigned long>(index.MaxPerFileRead) : 0;
  unsigned long bufferSize = maxRead < kReadBufferSize ? maxRead : kReadBufferSize;
  // A hook may look one byte past the data: the spare byte holds a NUL there.
  char buffer[kReadBufferSize + 1];

  index.partialWord[0] = '\0';
  unsigned long totalRead = 0;
  unsigned long carryLength = 0;
  bool firstBuffer = true;
  for (;;) {
    const unsigned long bytesRead = std::fread(buffer + carryLength, 1, bufferSize - carryLength, file.get());
    if (carryLength + bytesRead == 0) break;
    buffer[carryLength + bytesRead] = '\0';

    index.partialWord[0] = '\0';
    totalRead += bytesRead;
    indexBuffer(buffer, carryLength + bytesRead, fileNumber, firstBuffer);

    index.BytesRead += static_cast<double>(bytesRead);
    index.reportBytesRead(path);

    if (totalRead >= maxRead) {
      index.partialWord[0] = '\0';
      if (index.ReportSkipped && maxRead > 0 && std::fgetc(file.get()) != EOF) index.reportSkipped("cut", path);
      break;
    }
    // Only an empty carry is moved to the front of the buffer; a word cut by
    // the buffer boundary is therefore never joined: its tail is cut as a word
    // of its own and its head is dropped when the next pass empties the carry.
    if (index.partialWord[0] == '\0' && bytesRead > 0) {
      std::memcpy(buffer, index.partialWord, std::strlen(index.partialWord) + 1);
    }
    carryLength = 0;
    if (maxRead - totalRead < bufferSize - carryLength) {
      bufferSize = maxRead - totalRead + carryLength;
    }
    firstBuffer = false;
  }

  // Same inversion for the last word: a word running to the end of the file
  // (or of the read limit) with no separator after it is not indexed.
  if (index.partialWord[0] == '\0' && static_cast<long>(std::strlen(index.partialWord)) >= index.MinWordLength) {
    index.indexWord(index.partialWord, static_cast<uint32_t>(fileNumber));
  }
  file.reset();
  index.ContentsIndexed += 1;
  return true;
}

void CFileAnalyzer::convertRawBuffer(char *, unsigned long) {}

void CFileAnalyzer::carryBytes(const char *from, unsigned long count) {
  char *carry = m_pIndex->partialWord;
  if (count > sizeof m_pIndex->partialWord - 1) count = sizeof m_pIndex->partialWord - 1;
  std::memmove(carry, from, count);
  carry[count] = '\0';
}

bool CFileAnalyzer::extractToTempFile(const char *, const char *, const char *, unsigned long) { return false; }

char *CFileAnalyzer::fillDisplayBuffer(const char *path, unsigned long, unsigned long maxLength, int wrapWidth,
                                       bool displayFlag) {
  FileHandle file(std::fopen(path, "rb"));
  if (!file) throwKurvoError(kCannotOpenContentsFile, path);

  MallocBlock block(maxLength + 1 == 0 ? nullptr : static_cast<char *>(std::malloc(maxLength + 1)));
  // The read and work buffers (almost 200 KB together) live on the heap, not
  // on the stack: hosts call this from threads with small stacks.
  std::unique_ptr<char[]> input(new (std::nothrow) char[kReadBufferSize + 1]);
  std::unique_ptr<char[]> work(new (std::nothrow) char[kDisplayWorkSize + 1]);
  if (!block || !input || !work) {
    file.reset();
    throwKurvoError(kNoMemory, "");
  }
  char *text = block.get();
  text[0] = '\0';
  time_t lastStatus = std::time(nullptr);

  CKurvoIndex &index = *m_pIndex;
  unsigned long used = 0;
  unsigned long carryLength = 0;
  int state = 0;
  bool firstBuffer = true;
  while (used < maxLength) {
    const unsigned long bytesRead = std::fread(input.get() + carryLength, 1, kReadBufferSize - carryLength, file.get());
    if (bytesRead == 0) break;
    // A hook may look one byte past the data; it finds a NUL there.
    input[carryLength + bytesRead] = '\0';

    index.partialWord[0] = '\0';
    unsigned long written = stripBuffer(input.get(), carryLength + bytesRead, work.get(), kDisplayWorkSize, wrapWidth,
                                        displayFlag, firstBuffer, &state);
    if (written > maxLength - used) written = maxLength - used;
    std::memcpy(text + used, work.get(), written);
    used += written;
    text[used] = '\0';

    const time_t now = std::time(nullptr);
    if (now - lastStatus >= 1) {
      if (setStatus(kDecodingGeneric, path) == 0) break;
      lastStatus = now;
    }

    carryLength = 0;
    if (index.partialWord[0] != '\0') {
      carryLength = strnlen(index.partialWord, sizeof index.partialWord - 1);
      std::memcpy(input.get(), index.partialWord, carryLength);
    }
    firstBuffer = false;
  }
  return block.release();
}

bool CFileAnalyzer::checkIndexCharacter(char *, char **, char **, char **, char **, unsigned long) { return false; }

bool CFileAnalyzer::checkStripCharacter(unsigned char *, char **, unsigned long *, char, bool, int *) { return false; }
