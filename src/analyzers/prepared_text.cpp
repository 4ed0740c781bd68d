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

// The cutter's sink: gathers each read's words once, with their counts, by
// an open-addressing table of word numbers and hashes. Numbers from an
// earlier read count as free slots, so the table is never cleared.
class ReadWords {
 public:
  ReadWords(PreparedText &prepared, uint64_t fileSize) : m_prepared(prepared) {
    // Room for twice the distinct words a read of the file may hold; the
    // table is used while at most half full.
    const uint64_t expected = std::min<uint64_t>(fileSize / 8, kMostDistinct);
    while ((uint64_t{1} << m_bits) < 2 * expected) ++m_bits;
    m_slots.assign(size_t{1} << m_bits, Slot{0, 0});
  }

  void push(const char *word, size_t length, uint32_t hash) {
    if (m_held < m_slots.size() / 2) {
      const size_t mask = m_slots.size() - 1;
      for (size_t at = (hash * 0x9E3779B1u) >> (32 - m_bits);; at = (at + 1) & mask) {
        Slot &slot = m_slots[at];
        if (slot.number <= m_readStart) {
          slot = {static_cast<uint32_t>(m_prepared.words.size()) + 1, hash};
          ++m_held;
          break;
        }
        if (slot.hash != hash) continue;
        PreparedText::Word &held = m_prepared.words[slot.number - 1];
        if (held.length == length && std::memcmp(m_prepared.texts.data() + held.offset, word, length) == 0) {
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
    m_readStart = static_cast<uint32_t>(m_prepared.words.size());
    m_held = 0;
  }

 private:
  struct Slot {
    uint32_t number;  // word number + 1; 0 is free
    uint32_t hash;
  };
  static constexpr uint64_t kMostDistinct = 4096;

  PreparedText &m_prepared;
  unsigned m_bits = 8;
  std::vector<Slot> m_slots;
  uint32_t m_readStart = 0;  // numbers up to here belong to earlier reads
  size_t m_held = 0;         // words of this read in the table
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
