// Checking a stored index's files without trusting any of them.
#include "storage/storage_check.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "storage/byte_io.h"
#include "storage/file_links.h"
#include "storage/file_storage.h"
#include "storage/hashed_storage.h"
#include "storage/link_region.h"
#include "storage/text_storage.h"
#include "storage/table_sizes.h"
#include "storage/word_order.h"

namespace {

constexpr uint32_t kHeaderSize = 16;
constexpr uint32_t kFilePrefix = 20;  // next, parent, time, size, attributes

struct Table {
  Table(const char *n, TableSize s) : name(n), size(s) {}
  const char *name;
  TableSize size;  // as the library creates the table (links: at least)
  std::vector<char> bytes;
  uint32_t used = 0;
  bool walkable = false;          // the header's used size can be trusted
  std::vector<uint32_t> entries;  // entry offsets in storage order, so sorted
  bool has(uint32_t offset) const { return std::binary_search(entries.begin(), entries.end(), offset); }
  uint32_t word(uint32_t offset) const { return load32(bytes.data() + offset); }
  bool holds(uint64_t offset, uint64_t size) const { return offset + size <= used; }
};

struct Description {
  uint32_t prefix = 0;
  uint32_t entryCount = 0;
  uint32_t countOffset = 0;  // where "hash" holds the entry count
  std::vector<uint32_t> buckets;
};

class StoreChecker {
 public:
  StoreChecker(const std::string &folder, const DamageSink &sink) : m_folder(folder), m_sink(sink) {}

  uint32_t run() {
    for (Table *t : {&m_files, &m_words, &m_skipped, &m_links}) load(*t);
    if (!readSummary()) return m_damages;
    walkEntries(m_files, kFilePrefix);
    walkEntries(m_words, 4 + word_data::kSize);
    walkEntries(m_skipped, 4);
    checkParents();
    checkChains(m_files, m_filesDesc, true);
    checkChains(m_words, m_wordsDesc, false);
    checkChains(m_skipped, m_skippedDesc, false);
    checkWordLists();
    checkWordOrder();
    return m_damages;
  }

 private:
  void damage(const Table &t, uint32_t offset, const char *what) {
    ++m_damages;
    m_sink(t.name, offset, what);
  }

  bool read(Table &t) {
    std::ifstream in(m_folder + t.name, std::ios::binary);
    if (!in) {
      damage(t, 0, "the file is missing or cannot be read");
      return false;
    }
    t.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
  }

  // A memory file: its header, and zero bytes past the used part.
  void load(Table &t) {
    if (!read(t)) return;
    if (t.bytes.size() < kHeaderSize || t.bytes.size() > UINT32_MAX) {
      return damage(t, 0, "the file is too short to hold its header");
    }
    const uint32_t size = static_cast<uint32_t>(t.bytes.size());
    if (t.word(0) != size) damage(t, 0, "the header's length is not the file's size");
    t.used = t.word(4);
    if (t.used < kHeaderSize || t.used > size) return damage(t, 4, "the header's used size lies outside the file");
    // The library creates every table with fixed sizes; a compacted "links"
    // starts at least as large as a new one.
    const uint32_t initial = t.word(8);
    if (initial != t.size.initial && !(&t == &m_links && initial > t.size.initial)) {
      damage(t, 8, "the header's initial size is not the table's");
    }
    if (t.word(12) != t.size.increment) damage(t, 12, "the header's growth step is not the table's");
    t.walkable = true;
    auto stray = std::find_if(t.bytes.begin() + t.used, t.bytes.end(), [](char c) { return c != 0; });
    if (stray != t.bytes.end())
      damage(t, static_cast<uint32_t>(stray - t.bytes.begin()), "a byte past the used part is not zero");
  }

  // "hash": the four descriptions and nothing after them.
  bool readSummary() {
    if (!read(m_hash)) return false;
    if (m_hash.bytes.size() > UINT32_MAX) return false;
    m_hash.used = static_cast<uint32_t>(m_hash.bytes.size());
    const uint32_t damagesBefore = m_damages;
    m_cursor = 0;
    bool ok = expect(kFileStorageMagic, "the files description does not start with its magic number") &&
              expectPrefix(m_filesDesc, kFilePrefix) && readBuckets(m_filesDesc) &&
              expect(kTextStorageMagic, "the words description does not start with its magic number") &&
              expectPrefix(m_wordsDesc, 4 + word_data::kSize) && readCount(m_wordsDesc) && readBuckets(m_wordsDesc) &&
              expect(kTextStorageMagic, "the skipped description does not start with its magic number") &&
              expectPrefix(m_skippedDesc, 4) && readCount(m_skippedDesc) && readBuckets(m_skippedDesc) &&
              expect(kLinksMagic, "the links description does not start with its magic number") && next(m_counts);
    if (ok && m_cursor != m_hash.used) damage(m_hash, m_cursor, "bytes follow the last description");
    if (!ok && m_damages == damagesBefore) damage(m_hash, m_cursor, "the file ends inside a description");
    return ok;
  }

  bool next(uint32_t &value) {
    if (!m_hash.holds(m_cursor, 4)) return false;
    value = m_hash.word(m_cursor);
    m_cursor += 4;
    return true;
  }

  bool readCount(Description &d) {
    d.countOffset = m_cursor;
    return next(d.entryCount);
  }

  bool expect(uint32_t magic, const char *what) {
    uint32_t value = 0;
    if (!next(value)) return false;
    if (value != magic) damage(m_hash, m_cursor - 4, what);
    return value == magic;
  }

  bool expectPrefix(Description &d, uint32_t prefix) {
    if (!next(d.prefix)) return false;
    if (d.prefix != prefix) damage(m_hash, m_cursor - 4, "a table's prefix size is wrong");
    return d.prefix == prefix;
  }

  bool readBuckets(Description &d) {
    uint32_t count = 0;
    if (!expect(kHashEntriesMagic, "a bucket array does not start with its magic number") || !next(count)) return false;
    if (count == 0 || count > (m_hash.used - m_cursor) / 4) {
      damage(m_hash, m_cursor - 4, "a bucket count does not fit the file");
      return false;
    }
    for (uint32_t i = 0; i < count; ++i) d.buckets.push_back(m_hash.word(m_cursor + 4 * i));
    m_cursor += 4 * count;
    return true;
  }

  // Entries lie back to back from offset 16: the prefix, then a text ending
  // in NUL. Each is known by the offset of its text.
  void walkEntries(Table &t, uint32_t prefix) {
    if (!t.walkable) return;
    uint64_t start = kHeaderSize;
    while (start < t.used) {
      const uint64_t text = start + prefix;
      if (text >= t.used) return damage(t, static_cast<uint32_t>(start), "the last entry is cut off");
      const char *begin = t.bytes.data() + text;
      const char *end = static_cast<const char *>(std::memchr(begin, 0, t.used - text));
      if (!end) return damage(t, static_cast<uint32_t>(text), "a text has no terminating NUL");
      t.entries.push_back(static_cast<uint32_t>(text));
      start = text + static_cast<uint64_t>(end - begin) + 1;
    }
  }

  // A parent is added before anything it holds, so it lies below it.
  void checkParents() {
    for (uint32_t record : m_files.entries) {
      const uint32_t parent = m_files.word(record - 16);
      if (parent != 0 && (parent >= record || !m_files.has(parent))) {
        damage(m_files, record - 16, "a parent is not an earlier record");
      }
    }
  }

  // Every entry on exactly one chain, the one its text hashes to. Names of
  // removed records were overwritten after they were hashed.
  void checkChains(const Table &t, const Description &d, bool files) {
    if (!t.walkable) return;
    if (!files && d.entryCount != t.entries.size()) {
      damage(m_hash, d.countOffset, "a table's entry count differs from the entries its file holds");
    }
    std::vector<bool> seen(t.entries.size());
    size_t linked = 0;
    const uint32_t next = d.prefix;
    for (uint32_t bucket = 0; bucket < d.buckets.size(); ++bucket) {
      for (uint32_t e = d.buckets[bucket]; e != 0; e = t.word(e - next)) {
        auto it = std::lower_bound(t.entries.begin(), t.entries.end(), e);
        if (it == t.entries.end() || *it != e) {
          damage(t, e, "a chain leads to no entry");
          break;
        }
        const size_t index = static_cast<size_t>(it - t.entries.begin());
        if (seen[index]) {
          damage(t, e - next, "an entry is on a chain twice");
          break;
        }
        seen[index] = true;
        ++linked;
        const char *text = t.bytes.data() + e;
        const bool removed = files && static_cast<unsigned char>(text[0]) == 0xFF;
        if (!removed && hashText(text, static_cast<uint32_t>(d.buckets.size())) != bucket) {
          damage(t, e, "an entry lies on another bucket's chain (its text or a chain is damaged)");
        }
      }
    }
    if (linked != t.entries.size()) damage(t, 0, "entries lie on no chain");
  }

  void checkWordLists() {
    if (!m_words.walkable) return;
    const uint32_t entrySize = m_counts ? 5 : 4;
    if (m_links.walkable && m_links.holds(kHeaderSize, 4) && m_links.word(kHeaderSize) != 0) {
      damage(m_links, kHeaderSize, "the reserved word is not 0");
    }
    for (uint32_t word : m_words.entries) {
      const uint32_t data = word - word_data::kSize;
      const uint32_t current = m_words.word(data + word_data::kCurrentFile);
      if (current != 0 && !m_files.has(current)) damage(m_words, data, "a word's current file is not a record");
      if (load16(m_words.bytes.data() + data + word_data::kCounter) > 255 ||
          load16(m_words.bytes.data() + data + word_data::kReserved) != 0) {
        damage(m_words, data + word_data::kCounter, "a word's counter is out of range");
      }
      if (m_words.word(data + word_data::kEarlierFiles) > m_files.entries.size()) {
        damage(m_words, data + word_data::kEarlierFiles, "a word's earlier-files count exceeds the records");
      }
      if (m_links.walkable) checkList(data + word_data::kListPosition, entrySize);
    }
  }

  // A word's blocks: entries up to a zero top entry, then the next-list
  // position of an older block, which always lies lower.
  void checkList(uint32_t positionField, uint32_t entrySize) {
    uint32_t position = m_words.word(positionField);
    uint32_t from = UINT32_MAX;
    while (position != 0) {
      if (position < 20 || position >= from || !m_links.holds(position, entrySize)) {
        return damage(from == UINT32_MAX ? m_words : m_links, from == UINT32_MAX ? positionField : from,
                      "a list position lies outside the lists");
      }
      uint64_t cursor = position;
      for (;;) {
        if (!m_links.holds(cursor, entrySize + 4)) return damage(m_links, position, "a list block has no end");
        const uint32_t file = m_links.word(static_cast<uint32_t>(cursor));
        if (file == 0) break;
        if (file != kRemovedFileNumber && !m_files.has(file)) {
          return damage(m_links, static_cast<uint32_t>(cursor), "a list names no file record");
        }
        cursor += entrySize;
      }
      from = static_cast<uint32_t>(cursor + entrySize);
      const uint32_t older = m_links.word(from);
      if (older >= position) return damage(m_links, from, "a list's next block is not an older one");
      position = older;
    }
  }

  // "wordorder", when there is one that was written for this word table:
  // each word once, in byte order of the texts. One written for an earlier
  // table is no damage: it is not used.
  void checkWordOrder() {
    std::ifstream in(m_folder + m_order.name, std::ios::binary);
    if (!in || !m_words.walkable) return;
    m_order.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    const size_t size = m_order.bytes.size();
    if (size < 12 || size % 4 != 0 || size > UINT32_MAX) return damage(m_order, 0, "the file's size is no word order");
    m_order.used = static_cast<uint32_t>(size);
    if (m_order.word(0) != kWordOrderMagic) return damage(m_order, 0, "the file does not start with its magic number");
    if (m_order.word(8) != size / 4 - 3) return damage(m_order, 8, "the count is not the number of entries");
    if (m_order.word(4) != m_words.used) return;
    if (m_order.word(8) != m_words.entries.size()) return damage(m_order, 8, "the count is not the number of words");
    const char *previous = nullptr;
    for (uint32_t at = 12; at < size; at += 4) {
      const uint32_t entry = m_order.word(at);
      if (!m_words.has(entry)) return damage(m_order, at, "an entry is no word");
      const char *text = m_words.bytes.data() + entry;
      if (previous && std::strcmp(previous, text) >= 0) return damage(m_order, at, "the words are out of order");
      previous = text;
    }
  }

  std::string m_folder;
  const DamageSink &m_sink;
  uint32_t m_damages = 0;
  Table m_hash{"hash", {0, 0}}, m_files{"files", table_sizes::kFiles}, m_words{"words", table_sizes::kWords},
      m_skipped{"skipped", table_sizes::kSkipped}, m_links{"links", table_sizes::kLinks}, m_order{"wordorder", {0, 0}};
  Description m_filesDesc, m_wordsDesc, m_skippedDesc;
  uint32_t m_counts = 0;
  uint32_t m_cursor = 0;
};

}  // namespace

uint32_t checkStorage(const std::string &folder, const DamageSink &sink) { return StoreChecker(folder, sink).run(); }
