// Cutting a UTF-8 file into words, read by read: shared by indexing and by the read-ahead thread.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "analyzers/utf8_decoder.h"
#include "index/kurvo_index.h"
#include "storage/hashed_storage.h"
#include "storage/lower_case_table.h"

namespace utf8_words {

constexpr size_t kReadSize = 65535;

// Cuts decoded text into words by the index's character classes and hands
// each finished word to sink.push(word, length, textHash(word)); a word may
// run on from one piece into the next. Reads only the index's settings.
template <typename Sink>
class WordCollector {
 public:
  WordCollector(const CKurvoIndex &index, Sink &sink)
      : m_index(index),
        m_maxLength(index.longestWordSetting()),
        m_word(static_cast<size_t>(m_maxLength > 0 ? m_maxLength : 0) + 3),
        m_sink(sink) {}

  void cut(const std::string &text) {
    const int32_t *starts = m_index.validCharMask;
    const int32_t *continues = m_index.validTrailingMask;
    // Words one character longer than the maximum are still taken, as by
    // the other analyzers; longer ones are not.
    const size_t room = static_cast<size_t>(m_maxLength > 0 ? m_maxLength : 0) + 2;
    for (const char ch : text) {
      const unsigned char c = static_cast<unsigned char>(ch);
      if ((starts[c] || (m_length && continues[c])) && c != kForeignCharacter) {
        if (m_length < room) {
          // The hash grows with the word; a folded 0 (DEL) ends what
          // textHash reads, so such a word is hashed again at its end.
          const unsigned char folded = lowerCase(c);
          m_word[m_length++] = static_cast<char>(folded);
          m_hash = m_hash * 33 + static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(folded)));
          m_sawZero |= folded == 0;
        } else {
          m_tooLong = true;
        }
      } else if (m_length) {
        endWord();
      }
    }
  }
  // Ends the word in progress.
  void finish() { endWord(); }
  // Leaves out the word in progress.
  void drop() {
    m_length = 0;
    m_hash = 0;
    m_sawZero = false;
  }

  // Sized for the longest word the index takes, with its NUL.
  size_t longest() const { return m_word.size(); }

 private:
  void endWord() {
    const long length = static_cast<long>(m_length);
    if (!m_tooLong && length >= m_index.MinWordLength && length <= m_maxLength + 1) {
      m_word[m_length] = '\0';
      m_sink.push(m_word.data(), m_length, m_sawZero ? textHash(m_word.data()) : m_hash);
    }
    m_length = 0;
    m_tooLong = false;
    m_hash = 0;
    m_sawZero = false;
  }

  const CKurvoIndex &m_index;
  long m_maxLength;
  std::vector<char> m_word;  // the word so far, room for the longest and a NUL
  size_t m_length = 0;
  bool m_tooLong = false;
  uint32_t m_hash = 0;  // textHash of the word so far
  bool m_sawZero = false;
  Sink &m_sink;
};

// Reads file in pieces of kReadSize up to the index's read limit, decodes
// each and cuts it; afterRead(got) follows each piece, the empty last one
// included. True when the limit cut the file short.
template <typename Sink, typename AfterRead>
bool cutFile(FILE *file, const CKurvoIndex &index, Utf8Decoder &decoder, WordCollector<Sink> &words,
             AfterRead afterRead) {
  const uint64_t maxRead = index.MaxPerFileRead > 0 ? static_cast<uint64_t>(index.MaxPerFileRead) : 0;
  std::unique_ptr<char[]> buffer(new char[kReadSize]);
  std::string text;
  uint64_t total = 0;
  bool cut = false;
  for (;;) {
    const size_t want = static_cast<size_t>(std::min<uint64_t>(kReadSize, maxRead - total));
    const size_t got = want ? std::fread(buffer.get(), 1, want, file) : 0;
    total += got;
    cut = want == 0 && total > 0 && std::fgetc(file) != EOF;
    const bool last = got == 0;
    text.clear();
    decoder.decode(buffer.get(), got, last, text);
    words.cut(text);
    afterRead(got);
    if (last) return cut;
  }
}

}  // namespace utf8_words
