// Rewriting each word's chain of list blocks as one block of its live files.
#include "storage/link_compaction.h"

#include <string>
#include <unordered_map>
#include <vector>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"

namespace {

struct Entry {
  uint32_t file;
  unsigned char count;
};

// Whether a file's entries are dead: its number was overwritten with 1, or
// its record or one holding it is marked deleted (a changed archive is read
// again under a new record, and its old members go with it).
class RemovedFiles {
 public:
  explicit RemovedFiles(const CFileStorage &files) : m_files(files) {}

  bool operator()(uint32_t file) {
    if (file == kRemovedFileNumber) return true;
    auto known = m_known.find(file);
    if (known != m_known.end()) return known->second;
    bool removed = false;
    uint32_t depth = 0;
    for (uint32_t record = file; record != 0 && !removed; ++depth) {
      const char *data = m_files.getData(record);
      // Parents lie below what they hold; anything else is damage, kept as it is.
      if (!data || depth > kMaxDepth) break;
      removed = file_record::isObsolete(data);
      const uint32_t parent = file_record::parent(data);
      record = parent < record ? parent : 0;
    }
    m_known.emplace(file, removed);
    return removed;
  }

 private:
  static constexpr uint32_t kMaxDepth = 100;
  const CFileStorage &m_files;
  std::unordered_map<uint32_t, bool> m_known;
};

// The entries of live files on the chain starting at position. Older blocks
// always lie below newer ones, so a next-list that does not go down is damage.
void readChain(RemovedFiles &isRemoved, const CFileLinks &links, uint32_t position, std::vector<Entry> &out) {
  out.clear();
  while (position != 0) {
    uint32_t cursor = position;
    unsigned char count = 0;
    for (uint32_t file = links.getFile(cursor, count); file != 0; file = links.getFile(cursor, count)) {
      if (!isRemoved(file)) out.push_back({file, count});
    }
    const uint32_t next = links.getNextList(cursor);
    if (next >= position) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    position = next;
  }
}

uint32_t listPosition(const CTextStorage &words, uint32_t word) {
  const char *data = words.getData(word);
  if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  return load32(data + word_data::kListPosition);
}

uint64_t blockSize(uint32_t entrySize, uint64_t entries) { return entrySize * (entries + 1) + 4; }

}  // namespace

LinkSpace measureLinks(const CTextStorage &words, const CFileStorage &files, const CFileLinks &links) {
  LinkSpace space;
  RemovedFiles removed(files);
  std::vector<Entry> entries;
  for (uint32_t word = words.getFirst(); word; word = words.getNext(word)) {
    readChain(removed, links, listPosition(words, word), entries);
    if (!entries.empty()) space.live += blockSize(links.entrySize(), entries.size());
  }
  const uint64_t blocks = links.getUsed() > 20 ? links.getUsed() - 20 : 0;
  space.dead = blocks > space.live ? blocks - space.live : 0;
  return space;
}

std::vector<NewListPosition> compactLinks(const CTextStorage &words, const CFileStorage &files,
                                          const CFileLinks &source, CFileLinks &target) {
  const uint32_t entrySize = target.entrySize();
  std::vector<NewListPosition> positions;
  RemovedFiles removed(files);
  std::vector<Entry> entries;
  for (uint32_t word = words.getFirst(); word; word = words.getNext(word)) {
    readChain(removed, source, listPosition(words, word), entries);
    uint32_t position = 0;
    if (!entries.empty()) {
      const uint64_t size = blockSize(entrySize, entries.size());
      if (size > UINT32_MAX) throwKurvoError(kurvo_keys::kGetHugeSpace, std::to_string(size));
      // New space is zero: the top entry and the next-list stay 0.
      position = target.getSpace(static_cast<uint32_t>(size)) + static_cast<uint32_t>(size) - 4 - entrySize;
      for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
        position -= entrySize;
        target.addFile(position, it->file, it->count);
      }
    }
    positions.push_back({word, position});
  }
  return positions;
}
