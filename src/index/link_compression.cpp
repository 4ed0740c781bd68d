// Turning the word links of a run into one new file-list block per word.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <vector>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "index/kurvo_index.h"
#include "index/slot_writer.h"
#include "storage/byte_io.h"
#include "storage/word_order.h"

namespace {

constexpr uint32_t kCompressReportStep = 50000;

std::string rangeText(uint32_t from, uint32_t to) {
  char text[32];
  std::snprintf(text, sizeof text, "%d\t%d", static_cast<int>(from), static_cast<int>(to));
  return text;
}

// Whether the pair (file, word) goes into the word's new block.
bool takesSlot(const char *data, uint32_t file) {
  return load32(data + word_data::kEarlierFiles) >= 1 && file != load32(data + word_data::kCurrentFile);
}

// The slots each word fills in this run: what the second pass will write.
std::unordered_map<uint32_t, uint32_t> slotsOfRun(CKurvoIndex &index) {
  std::unordered_map<uint32_t, uint32_t> slots;
  const CWordLinks &wordLinks = *index.wordLinks;
  uint32_t position = 16;
  for (uint32_t file = wordLinks.getFile(position); file; file = wordLinks.getFile(position)) {
    unsigned char count = 0;
    for (uint32_t word = wordLinks.getWord(position, count); word; word = wordLinks.getWord(position, count)) {
      const char *data = index.words->recordedData(word);
      if (data && takesSlot(data, file)) ++slots[word];
    }
  }
  return slots;
}

// A word's new block: room for earlier files and the top slot, which stays 0
// and ends the block, then the next-list word, chained in front of the
// word's older blocks. The list position starts at the top slot.
void placeBlock(CFileLinks &fileLinks, char *data, uint32_t earlier, uint32_t entrySize) {
  const uint64_t blockSize = static_cast<uint64_t>(entrySize) * (earlier + 1) + 4;
  if (blockSize > UINT32_MAX) throwKurvoError(kurvo_keys::kGetHugeSpace, std::to_string(blockSize));
  const uint32_t nextList = fileLinks.getSpace(static_cast<uint32_t>(blockSize)) + static_cast<uint32_t>(blockSize) - 4;
  const uint32_t previous = load32(data + word_data::kListPosition);
  if (previous) fileLinks.setNextList(nextList, previous);
  store32(data + word_data::kListPosition, nextList - entrySize);
}

// Reports the share of a pass done, every five percent of its items.
class PassProgress {
 public:
  PassProgress(const CKurvoIndex &index, size_t items) : m_show(index.ShowStatus != 0), m_step(items * 5 / 100) {}
  void next() {
    if (++m_sinceReport > m_step && m_show) {
      m_percent += 5;
      setStatus(kurvo_keys::kCountingCompress, std::to_string(m_percent));
      m_sinceReport = 0;
    }
  }

 private:
  bool m_show;
  size_t m_step;
  size_t m_sinceReport = m_step + 1;
  int m_percent = -5;
};

// First pass: a block for every word seen in more than one file, in the
// order of the word table.
void placeBlocks(CKurvoIndex &index, CFileLinks &fileLinks, uint32_t entrySize) {
  PassProgress progress(index, index.WordsIndexed);
  CTextStorage &words = *index.words;
  for (uint32_t word = words.getFirst(); word; word = words.getNext(word)) {
    progress.next();
    // The walk has just found this entry's text.
    char *data = words.foundData(word);
    if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    const uint32_t earlier = load32(data + word_data::kEarlierFiles);
    if (earlier != 0) placeBlock(fileLinks, data, earlier, entrySize);
  }
}

// The same with SizedListBlocks: a block has room for the files this run
// adds, and a word that adds none gets none (for a first build the two are
// the same). Only the words that get one are visited, in table order, so
// the blocks lie where the walk over every word would put them.
void placeSizedBlocks(CKurvoIndex &index, CFileLinks &fileLinks, uint32_t entrySize) {
  const std::unordered_map<uint32_t, uint32_t> slots = slotsOfRun(index);
  std::vector<std::pair<uint32_t, uint32_t>> ordered(slots.begin(), slots.end());
  std::sort(ordered.begin(), ordered.end());
  PassProgress progress(index, ordered.size());
  for (const auto &[word, earlier] : ordered) {
    progress.next();
    char *data = index.words->recordedData(word);
    if (!data) throwKurvoError(kurvo_keys::kAssertionFailed, "");
    placeBlock(fileLinks, data, earlier, entrySize);
  }
}

// The word links read once, in order, as steps: a group's start (word 0),
// then each of its (file, word) pairs. The steps are decoded kAhead ahead of
// the pass, so that each pair's word data can be asked for early, and once
// that has arrived the slot it names. Only hints: nothing is changed, and
// what lies outside the tables is passed over.
class StepStream {
 public:
  struct Step {
    uint32_t file;
    uint32_t word;  // 0: the start of file's group
    unsigned char count;
  };

  StepStream(const CKurvoIndex &index, const CFileLinks &fileLinks, uint32_t entrySize, bool slotHints = true)
      : m_wordLinks(*index.wordLinks),
        m_words(*index.words),
        m_fileLinks(fileLinks),
        m_entrySize(entrySize),
        m_slotHints(slotHints) {
    while (m_count < kRing && decode()) {
    }
    for (size_t i = kSlotDistance; i < kDataDistance && i < m_count; ++i) askForData(i);
    for (size_t i = 0; i < kSlotDistance && i < m_count; ++i) askForData(i), askForSlot(i);
  }

  bool empty() const { return m_count == 0; }
  const Step &front() const { return m_ring[m_first]; }
  void pop() {
    m_first = (m_first + 1) % kRing;
    --m_count;
    decode();
    if (m_count > kDataDistance) askForData(kDataDistance);
    if (m_slotHints && m_count > kSlotDistance) askForSlot(kSlotDistance);
  }

 private:
  static constexpr size_t kDataDistance = 32;
  static constexpr size_t kSlotDistance = 16;
  static constexpr size_t kRing = 64;

  // Appends the next step; false at the end of the links.
  bool decode() {
    if (m_ended || m_count == kRing) return false;
    Step &step = m_ring[(m_first + m_count) % kRing];
    step.count = 0;
    if (m_file) step.word = m_wordLinks.getWord(m_position, step.count);
    if (!m_file || !step.word) {
      m_file = m_wordLinks.getFile(m_position);
      if (!m_file) return !(m_ended = true);
      step.word = 0;
    }
    step.file = m_file;
    ++m_count;
    return true;
  }
  [[gnu::always_inline]] void askForData(size_t ahead) const {
    const Step &step = m_ring[(m_first + ahead) % kRing];
    if (!step.word) return;
    if (const char *data = m_words.recordedData(step.word)) __builtin_prefetch(data);
  }
  [[gnu::always_inline]] void askForSlot(size_t ahead) const {
    const Step &step = m_ring[(m_first + ahead) % kRing];
    const char *data = step.word ? m_words.recordedData(step.word) : nullptr;
    // A word without a block has list position 0: its slot lies past the end.
    const char *slot = data ? m_fileLinks.getPointer(load32(data + word_data::kListPosition) - m_entrySize) : nullptr;
    if (slot) __builtin_prefetch(slot, 1);
  }

  const CWordLinks &m_wordLinks;
  const CTextStorage &m_words;
  const CFileLinks &m_fileLinks;
  const uint32_t m_entrySize;
  const bool m_slotHints;
  uint32_t m_position = 16;
  uint32_t m_file = 0;  // the group being decoded, 0 between groups
  bool m_ended = false;
  Step m_ring[kRing];
  size_t m_first = 0;
  size_t m_count = 0;
};

// Second pass: every (file, word) pair of the word links goes one slot down
// in its word's new block, so a block reads newest file first.
void fillBlocks(CKurvoIndex &index, CFileLinks &fileLinks, uint32_t entrySize) {
  CTextStorage &words = *index.words;
  uint32_t linksRead = 0;
  uint32_t threshold = 0;
  // With reading ahead on, the writes go to another thread (if one starts).
  std::unique_ptr<SlotWriter> writer;
  try {
    if (index.ReadAhead > 0) writer = std::make_unique<SlotWriter>(fileLinks);
  } catch (const std::system_error &) {
  }
  for (StepStream steps(index, fileLinks, entrySize, !writer); !steps.empty(); steps.pop()) {
    const StepStream::Step &step = steps.front();
    ++linksRead;
    if (!step.word) {
      if (linksRead >= threshold && index.ShowStatus) {
        setStatus(kurvo_keys::kCompLinksFmt, rangeText(threshold, threshold + kCompressReportStep));
        threshold += kCompressReportStep;
      }
      continue;
    }
    char *data = words.recordedData(step.word);
    if (!data || !takesSlot(data, step.file)) continue;
    const uint32_t slot = load32(data + word_data::kListPosition) - entrySize;
    store32(data + word_data::kListPosition, slot);
    if (writer) {
      // What addFile would raise, or the region it would make writable.
      if (!fileLinks.getRange(slot, entrySize) || !fileLinks.isWritable()) fileLinks.checkEntry(slot);
      writer->add(slot, step.file, step.count);
    } else {
      fileLinks.addFile(slot, step.file, step.count);
    }
  }
  if (writer) writer->finish();
}

}  // namespace

void CKurvoIndex::compressLinks() {
  if (!links || !wordLinks || !words) throwKurvoError(kurvo_keys::kAssertionFailed, "");
  CFileLinks *fileLinks = links;
  const std::string tempPath = storagePath + "temp";
  const uint32_t entrySize = UseRanking ? 5 : 4;

  // Sorting the words for the word order reads only their texts, which
  // compression leaves alone: with reading ahead on, it runs meanwhile,
  // unless the stored order needs only the few words added since.
  std::thread sorting;
  m_sortedWords.clear();
  m_sortedWordsUsed = 0;
  if (ReadAhead > 0 && !CWordOrder(storagePath + "wordorder").extendsCheaply(*words)) {
    try {
      sorting = std::thread([this, used = words->getUsed()] {
        try {
          m_sortedWords = sortedWordEntries(*words);
          m_sortedWordsUsed = used;
        } catch (...) {
          // Out of memory: the order is sorted when it is stored.
        }
      });
    } catch (const std::system_error &) {
    }
  }
  const auto sorted = [&sorting] {
    if (sorting.joinable()) sorting.join();
  };

  try {
    fileLinks->setGrowByRequest(GrowByRequest != 0);
    // Before the first block every word's earlier files are this run's, so
    // sized blocks are the classic ones and need no counting pass.
    if (SizedListBlocks && fileLinks->holdsBlocks())
      placeSizedBlocks(*this, *fileLinks, entrySize);
    else
      placeBlocks(*this, *fileLinks, entrySize);
    fillBlocks(*this, *fileLinks, entrySize);
  } catch (...) {
    sorted();
    // A half-built list is useless: drop every table the run touched. The
    // file-link region taken above is the index's own, so it goes once.
    delete fileLinks;
    links = nullptr;
    delete wordLinks;
    wordLinks = nullptr;
    std::remove(tempPath.c_str());
    delete files;
    files = nullptr;
    delete words;
    words = nullptr;
    throw;
  }

  // Unmapping the spent word links and freeing their file's pages take
  // milliseconds; with reading ahead on, another thread does it after the
  // file is removed (its open mapping keeps the pages till then).
  const CFileMemory::Handover spent = ReadAhead > 0 ? wordLinks->handOver() : CFileMemory::Handover{nullptr, 0, -1};
  delete wordLinks;
  wordLinks = nullptr;
  std::remove(tempPath.c_str());
  if (spent.base || spent.fd >= 0) letGoInBackground(spent);
  sorted();
  if (ShowStatus) setStatus(kurvo_keys::kDone, "");
}
