// CUtf8Analyzer: decoding, word cutting across reads and display text with the file's own lines.
#include "analyzers/utf8_analyzer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "analyzers/c_handles.h"
#include "analyzers/prepared_text.h"
#include "analyzers/utf8_decoder.h"
#include "analyzers/utf8_words.h"
#include "analyzers/word_queue.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"
#include "index/read_ahead.h"
#include "storage/lower_case_table.h"

namespace {

using utf8_words::kReadSize;
using Words = utf8_words::WordCollector<WordQueue>;

// Room for the longest word the index takes, one more character and a NUL.
size_t wordRoom(const CKurvoIndex &index) {
  const long longest = index.longestWordSetting();
  return static_cast<size_t>(longest > 0 ? longest : 0) + 3;
}

// A read of got bytes done: counted, and said when the host asks for it.
void countRead(CKurvoIndex &index, uint64_t got, const char *path) {
  index.BytesRead += static_cast<double>(got);
  if (got) index.reportBytesRead(path);
}

void countForeign(CKurvoIndex &index, uint64_t foreign) {
  if (foreign == 0) return;
  index.ForeignCharacters += foreign;
  index.FilesWithForeignText += 1;
}

// Indexes the words a read-ahead cut from the file, with the calls, in the
// order, that reading it here makes.
void indexPrepared(CKurvoIndex &index, const PreparedText &prepared, const char *path, uint32_t file) {
  WordQueue queue(index, file, wordRoom(index));
  size_t next = 0;
  const auto indexUpTo = [&](size_t end) {
    for (; next < end; ++next) {
      const PreparedText::Word &word = prepared.words[next];
      queue.push(prepared.texts.data() + word.offset, word.length, word.hash, word.times);
    }
    queue.flush();
  };
  for (const PreparedText::Read &read : prepared.reads) {
    indexUpTo(read.wordsEnd);
    countRead(index, read.got, path);
  }
  if (prepared.cut)
    index.reportSkipped("cut", path);
  else
    indexUpTo(prepared.words.size());
  countForeign(index, prepared.foreign);
  index.ContentsIndexed += 1;
}

// What a read-ahead has cut of the file, when it read the version recorded.
std::unique_ptr<PreparedText> preparedText(const CKurvoIndex &index, const char *path, uint32_t file) {
  if (!index.readAhead) return nullptr;
  std::unique_ptr<PreparedText> prepared = index.readAhead->take(path);
  const char *record = prepared ? index.files->getData(file) : nullptr;
  if (!record || file_record::size(record) != prepared->size || file_record::time(record) != prepared->time)
    return nullptr;
  return prepared;
}

// A file the read-ahead left to the walk is cut the same way here: each
// read's words are then indexed once with their counts.
std::unique_ptr<PreparedText> cutAheadHere(const CKurvoIndex &index, const char *path, uint32_t file) {
  if (!index.readAhead) return nullptr;
  // The record's size spares most files that are not cut a second open.
  const char *record = index.files->getData(file);
  const uint64_t size = record ? file_record::size(record) : 0;
  if (size < CReadAhead::kCutAheadSmallest || size > CReadAhead::kCutAheadLimit) return nullptr;
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return nullptr;
  struct stat info;
  if (fstat(fd, &info) != 0 || !CReadAhead::worthCutting(info)) {
    close(fd);
    return nullptr;
  }
  return prepareText(index, fd, info);
}

// Display text: CR LF and lone CR end lines, tabs stay, other control bytes
// become blanks; past the wrap width the last blank breaks the line.
class DisplayBuilder {
 public:
  DisplayBuilder(unsigned long maxLength, int wrapWidth) : m_max(maxLength), m_wrap(wrapWidth) {}

  bool full() const { return m_text.size() >= m_max; }
  void add(const std::string &decoded) {
    for (char ch : decoded) {
      if (full()) return;
      const unsigned char c = static_cast<unsigned char>(ch);
      const bool afterCr = m_afterCr;
      m_afterCr = c == '\r';
      if (c == '\n' && afterCr) continue;
      if (c == '\n' || c == '\r') {
        newLine();
      } else if (c == '\t' || c >= 0x20 || c == kForeignCharacter) {
        if (c == ' ' || c == '\t') m_lastBlank = m_text.size();
        m_text += static_cast<char>(c == 0x7F ? ' ' : c);
        wrap();
      } else {
        m_lastBlank = m_text.size();
        m_text += ' ';
      }
    }
  }
  std::string &text() { return m_text; }

 private:
  void newLine() {
    m_text += '\n';
    m_lineStart = m_text.size();
    m_lastBlank = std::string::npos;
  }
  void wrap() {
    if (m_wrap <= 0 || m_text.size() - m_lineStart <= static_cast<size_t>(m_wrap)) return;
    if (m_lastBlank == std::string::npos || m_lastBlank < m_lineStart) return;
    m_text[m_lastBlank] = '\n';
    m_lineStart = m_lastBlank + 1;
    m_lastBlank = std::string::npos;
  }

  unsigned long m_max;
  int m_wrap;
  std::string m_text;
  size_t m_lineStart = 0;
  size_t m_lastBlank = std::string::npos;
  bool m_afterCr = false;
};

}  // namespace

bool CUtf8Analyzer::canUseIndexBuffer() { return false; }

bool CUtf8Analyzer::indexFile(const char *path, unsigned long fileNumber) {
  CKurvoIndex &index = *m_pIndex;
  const uint32_t file = static_cast<uint32_t>(fileNumber);
  std::unique_ptr<PreparedText> prepared = preparedText(index, path, file);
  if (!prepared) prepared = cutAheadHere(index, path, file);
  if (prepared) {
    indexPrepared(index, *prepared, path, file);
    return true;
  }
  FileHandle handle(std::fopen(path, "rb"));
  if (!handle) return false;
  WordQueue queue(index, file, wordRoom(index));
  Words words(index, queue);
  Utf8Decoder decoder;
  const bool cut = utf8_words::cutFile(handle.get(), index, decoder, words, [&](size_t got) {
    queue.flush();
    countRead(index, got, path);
  });
  // A word running into the read limit may be cut short: it is left out.
  if (cut) {
    words.drop();
    index.reportSkipped("cut", path);
  } else {
    words.finish();
    queue.flush();
  }
  countForeign(index, decoder.foreignCount());
  index.ContentsIndexed += 1;
  return true;
}

int CUtf8Analyzer::indexBuffer(char *buffer, unsigned long length, unsigned long fileNumber, bool) {
  Utf8Decoder decoder;
  std::string text;
  decoder.decode(buffer, length, true, text);
  WordQueue queue(*m_pIndex, static_cast<uint32_t>(fileNumber), wordRoom(*m_pIndex));
  Words words(*m_pIndex, queue);
  words.cut(text);
  words.finish();
  queue.flush();
  countForeign(*m_pIndex, decoder.foreignCount());
  return 0;
}

char *CUtf8Analyzer::fillDisplayBuffer(const char *path, unsigned long, unsigned long maxLength, int wrapWidth, bool) {
  FileHandle file(std::fopen(path, "rb"));
  if (!file) throwKurvoError(kurvo_keys::kCannotOpenContentsFile, path);
  std::unique_ptr<char[]> buffer(new char[kReadSize]);
  Utf8Decoder decoder;
  DisplayBuilder display(maxLength, wrapWidth);
  std::string text;
  while (!display.full()) {
    const size_t got = std::fread(buffer.get(), 1, kReadSize, file.get());
    text.clear();
    decoder.decode(buffer.get(), got, got == 0, text);
    display.add(text);
    if (got == 0) break;
  }
  std::string &shown = display.text();
  if (shown.size() > maxLength) shown.resize(maxLength);
  char *block = static_cast<char *>(std::malloc(shown.size() + 1));
  if (!block) throwKurvoError(kurvo_keys::kNoMemory, "");
  std::memcpy(block, shown.c_str(), shown.size() + 1);
  return block;
}
