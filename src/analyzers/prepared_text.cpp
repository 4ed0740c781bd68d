// PreparedText: reading and cutting a UTF-8 text file ahead of its indexing.
#include "analyzers/prepared_text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "analyzers/c_handles.h"
#include "analyzers/utf8_words.h"
#include "storage/hashed_storage.h"

namespace {

// An open-addressing table of words by hash, kept by each thread from file
// to file. It holds stamps, which only grow: one below the current read's
// first stamp marks a free slot, so the table is never cleared.
struct WordTable {
  struct Slot {
    uint32_t stamp;  // 0: never used
    uint32_t hash;
  };
  static constexpr unsigned kMostBits = 13;
  static constexpr uint32_t kFreshStart = 1u << 31;
  std::vector<Slot> slots = std::vector<Slot>(size_t{1} << kMostBits, Slot{0, 0});
  uint32_t nextStamp = 1;
};

// The cutter's sink: gathers each read's words once, with their counts.
class ReadWords {
 public:
  ReadWords(PreparedText &prepared, uint64_t fileSize) : m_prepared(prepared), m_table(table()) {
    // Room for twice the distinct words a read of the file may hold (one in
    // eight bytes at most); the table is used while at most half full.
    const uint64_t expected = std::min<uint64_t>(fileSize, utf8_words::kReadSize) / 8;
    while ((uint64_t{1} << m_bits) < 2 * expected && m_bits < WordTable::kMostBits) ++m_bits;
    m_prepared.words.reserve(expected);
    m_prepared.texts.reserve(expected * 8);
    // Before the stamps could run out, the table starts afresh.
    if (m_table.nextStamp > WordTable::kFreshStart) {
      std::fill(m_table.slots.begin(), m_table.slots.end(), WordTable::Slot{0, 0});
      m_table.nextStamp = 1;
    }
    m_first = m_readFirst = m_table.nextStamp;
  }
  ~ReadWords() { m_table.nextStamp = m_first + static_cast<uint32_t>(m_prepared.words.size()); }

  void push(const char *word, size_t length, uint32_t hash) {
    if (m_held < (size_t{1} << m_bits) / 2) {
      const size_t mask = (size_t{1} << m_bits) - 1;
      for (size_t at = (hash * 0x9E3779B1u) >> (32 - m_bits);; at = (at + 1) & mask) {
        WordTable::Slot &slot = m_table.slots[at];
        if (slot.stamp < m_readFirst) {
          slot = {m_first + static_cast<uint32_t>(m_prepared.words.size()), hash};
          ++m_held;
          break;
        }
        if (slot.hash != hash) continue;
        PreparedText::Word &held = m_prepared.words[slot.stamp - m_first];
        if (held.length == length && sameBytes(m_prepared.texts.data() + held.offset, word, length)) {
          ++held.times;
          return;
        }
      }
    }
    // Past half full, words are held as they come: a read of many distinct
    // words gains little by counting.
    m_prepared.words.push_back(
        {static_cast<uint32_t>(m_prepared.texts.size()), static_cast<uint32_t>(length), hash, 1});
    m_prepared.texts.append(word, length + 1);
  }

  void endRead(uint64_t got) {
    m_prepared.reads.push_back({got, m_prepared.words.size()});
    m_readFirst = m_first + static_cast<uint32_t>(m_prepared.words.size());
    m_held = 0;
  }

 private:
  static WordTable &table() {
    thread_local WordTable kept;
    return kept;
  }
  // Words are short: a loop beats a call.
  static bool sameBytes(const char *a, const char *b, size_t length) {
    for (size_t i = 0; i < length; ++i)
      if (a[i] != b[i]) return false;
    return true;
  }

  PreparedText &m_prepared;
  WordTable &m_table;
  unsigned m_bits = 8;
  uint32_t m_first;      // the stamp of the file's first word
  uint32_t m_readFirst;  // the stamp of the read's first word
  size_t m_held = 0;     // words of this read in the table
};

}  // namespace

std::unique_ptr<PreparedText> prepareText(const CKurvoIndex &index, int fd, const struct stat &info) {
  FileHandle file(fdopen(fd, "rb"));
  if (!file) {
    close(fd);
    return nullptr;
  }
  auto prepared = std::make_unique<PreparedText>();
  prepared->size = static_cast<uint32_t>(info.st_size);
  prepared->time = static_cast<int32_t>(info.st_mtime);
  ReadWords sink(*prepared, static_cast<uint64_t>(info.st_size));
  utf8_words::WordCollector<ReadWords> words(index, sink);
  Utf8Decoder decoder;
  PreparedText &p = *prepared;
  p.cut = utf8_words::cutFile(file.get(), index, decoder, words, [&sink](size_t got) { sink.endRead(got); });
  if (!p.cut) words.finish();
  p.foreign = decoder.foreignCount();
  return prepared;
}
