// CUtf8Analyzer: decoding, word cutting across reads and display text with the file's own lines.
#include "analyzers/utf8_analyzer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "analyzers/c_handles.h"
#include "analyzers/utf8_decoder.h"
#include "analyzers/word_queue.h"
#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"
#include "storage/lower_case_table.h"

namespace {

constexpr size_t kReadSize = 65535;

// Cuts decoded text into words by the index's character classes; a word may
// run on from one piece into the next.
class WordCollector {
 public:
  WordCollector(CKurvoIndex &index, uint32_t file)
      : m_index(index),
        m_maxLength(index.longestWordSetting()),
        m_word(static_cast<size_t>(m_maxLength > 0 ? m_maxLength : 0) + 3),
        m_queue(index, file, m_word.size()) {}

  void cut(const std::string &text) {
    const int32_t *starts = m_index.validCharMask;
    const int32_t *continues = m_index.validTrailingMask;
    // Words one character longer than the maximum are still taken, as by
    // the other analyzers; longer ones are not.
    const size_t room = static_cast<size_t>(m_maxLength > 0 ? m_maxLength : 0) + 2;
    for (const char ch : text) {
      const unsigned char c = static_cast<unsigned char>(ch);
      if ((starts[c] || (m_length && continues[c])) && c != kForeignCharacter) {
        if (m_length < room)
          m_word[m_length++] = static_cast<char>(lowerCase(c));
        else
          m_tooLong = true;
      } else if (m_length) {
        endWord();
      }
    }
  }

  // Ends the word in progress and indexes every word still waiting.
  void finish() {
    endWord();
    flush();
  }
  // Leaves out the word in progress; the others are indexed.
  void drop() {
    m_length = 0;
    flush();
  }
  // Indexes the words cut so far, before anything a host can see happens.
  void flush() { m_queue.flush(); }

 private:
  void endWord() {
    const long length = static_cast<long>(m_length);
    if (!m_tooLong && length >= m_index.MinWordLength && length <= m_maxLength + 1) {
      m_word[m_length] = '\0';
      m_queue.push(m_word.data(), m_length);
    }
    m_length = 0;
    m_tooLong = false;
  }

  CKurvoIndex &m_index;
  long m_maxLength;
  std::vector<char> m_word;  // the word so far, room for the longest and a NUL
  size_t m_length = 0;
  bool m_tooLong = false;
  WordQueue m_queue;
};

void countForeign(CKurvoIndex &index, const Utf8Decoder &decoder) {
  if (decoder.foreignCount() == 0) return;
  index.ForeignCharacters += decoder.foreignCount();
  index.FilesWithForeignText += 1;
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
  FileHandle file(std::fopen(path, "rb"));
  if (!file) return false;
  CKurvoIndex &index = *m_pIndex;
  const uint64_t maxRead = index.MaxPerFileRead > 0 ? static_cast<uint64_t>(index.MaxPerFileRead) : 0;
  std::unique_ptr<char[]> buffer(new char[kReadSize]);
  Utf8Decoder decoder;
  WordCollector words(index, static_cast<uint32_t>(fileNumber));
  std::string text;
  uint64_t total = 0;
  bool cut = false;
  for (;;) {
    const size_t want = static_cast<size_t>(std::min<uint64_t>(kReadSize, maxRead - total));
    const size_t got = want ? std::fread(buffer.get(), 1, want, file.get()) : 0;
    total += got;
    cut = want == 0 && total > 0 && std::fgetc(file.get()) != EOF;
    const bool last = got == 0;
    text.clear();
    decoder.decode(buffer.get(), got, last, text);
    words.cut(text);
    words.flush();
    index.BytesRead += static_cast<double>(got);
    if (got) index.reportBytesRead(path);
    if (last) break;
  }
  // A word running into the read limit may be cut short: it is left out.
  if (cut) {
    words.drop();
    index.reportSkipped("cut", path);
  } else {
    words.finish();
  }
  countForeign(index, decoder);
  index.ContentsIndexed += 1;
  return true;
}

int CUtf8Analyzer::indexBuffer(char *buffer, unsigned long length, unsigned long fileNumber, bool) {
  Utf8Decoder decoder;
  std::string text;
  decoder.decode(buffer, length, true, text);
  WordCollector words(*m_pIndex, static_cast<uint32_t>(fileNumber));
  words.cut(text);
  words.finish();
  countForeign(*m_pIndex, decoder);
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
