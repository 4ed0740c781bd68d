// The word table's entries sorted by their text: a file beside the tables that answers prefix queries.
#include "storage/word_order.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "report/message_keys.h"
#include "report/reporting.h"
#include "storage/byte_io.h"

namespace {

constexpr size_t kHeaderWords = 3;

// Entry texts compare as unsigned bytes, as std::string does.
bool textBefore(const char *a, const char *b) { return std::strcmp(a, b) < 0; }

// The text of a word entry; null when entry is not where an entry starts.
const char *wordText(CTextStorage &words, uint32_t entry) {
  const char *text = words.getText(entry);
  return text && words.lookup(text) == entry ? text : nullptr;
}

bool writeAll(FILE *file, const std::vector<uint32_t> &words) {
  std::vector<char> bytes(words.size() * 4);
  for (size_t i = 0; i < words.size(); ++i) store32(&bytes[i * 4], words[i]);
  return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

// A word's first eight bytes as one number: most words differ in them, so
// most comparisons of the sort are one comparison of numbers.
struct SortedWord {
  uint64_t head;
  const char *text;
  uint32_t entry;

  explicit SortedWord(const char *t, uint32_t e) : head(0), text(t), entry(e) {
    int i = 0;
    for (; i < 8 && t[i]; ++i) head = head << 8 | static_cast<unsigned char>(t[i]);
    head <<= 8 * (8 - i);
  }
  bool operator<(const SortedWord &o) const {
    if (head != o.head) return head < o.head;
    // Equal heads with a NUL in them are equal words.
    return (head & 0xFF) != 0 && textBefore(text + 8, o.text + 8);
  }
};

}  // namespace

std::vector<uint32_t> sortedWordEntries(const CTextStorage &words) {
  std::vector<SortedWord> sorted;
  sorted.reserve(words.getEntryCount());
  for (uint32_t w = words.getFirst(); w != 0; w = words.getNext(w)) {
    // A damaged entry is left out; the order then never fits, and is not used.
    if (const char *text = words.getText(w)) sorted.emplace_back(text, w);
  }
  std::sort(sorted.begin(), sorted.end());
  std::vector<uint32_t> entries;
  entries.reserve(sorted.size());
  for (const SortedWord &word : sorted) entries.push_back(word.entry);
  return entries;
}

namespace {

// The earlier order with the words added since put in one by one, each
// where a binary search finds its place: far less work than sorting again
// when they are few. Empty when they are not few, or the words do not add up.
std::vector<uint32_t> extendedOrder(const CTextStorage &words, const CWordOrder &earlier) {
  if (!earlier.precedes(words)) return {};
  const size_t count = earlier.size();
  std::vector<SortedWord> added;
  for (uint32_t w = words.entryAppendedAt(earlier.usedBytes()); w != 0; w = words.getNext(w)) {
    const char *text = words.getText(w);
    if (!text || (added.size() + 1) * CWordOrder::kHeldPerAdded > count) return {};
    added.emplace_back(text, w);
  }
  if (count + added.size() != words.getEntryCount()) return {};
  std::sort(added.begin(), added.end());
  std::vector<uint32_t> entries;
  entries.reserve(count + added.size());
  size_t next = 0;
  for (const SortedWord &word : added) {
    size_t low = next, high = count;
    while (low < high) {
      const size_t middle = low + (high - low) / 2;
      const char *text = words.getText(earlier.entry(middle));
      if (!text) return {};
      if (SortedWord(text, 0) < word)
        low = middle + 1;
      else
        high = middle;
    }
    for (; next < low; ++next) entries.push_back(earlier.entry(next));
    entries.push_back(word.entry);
  }
  for (; next < count; ++next) entries.push_back(earlier.entry(next));
  return entries;
}

}  // namespace

void writeWordOrder(const CTextStorage &words, const std::string &path, const CWordOrder &earlier) {
  std::vector<uint32_t> entries = extendedOrder(words, earlier);
  if (entries.empty()) entries = sortedWordEntries(words);
  writeWordOrder(words, path, std::move(entries));
}

void writeWordOrder(const CTextStorage &words, const std::string &path, std::vector<uint32_t> entries) {
  const uint32_t header[] = {kWordOrderMagic, words.getUsed(), static_cast<uint32_t>(entries.size())};
  entries.insert(entries.begin(), std::begin(header), std::end(header));

  const std::string newPath = path + ".new";
  FILE *file = std::fopen(newPath.c_str(), "wb");
  bool written = file && writeAll(file, entries);
  if (file) written = std::fclose(file) == 0 && written;
  if (!written || std::rename(newPath.c_str(), path.c_str()) != 0) {
    std::remove(newPath.c_str());
    throwKurvoError(kurvo_keys::kFileMapWriteFail, path);
  }
}

CWordOrder::CWordOrder(const std::string &path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return;
  struct stat info;
  if (fstat(fd, &info) == 0 && info.st_size >= static_cast<off_t>(kHeaderWords * 4) && info.st_size % 4 == 0) {
    void *map = mmap(nullptr, static_cast<size_t>(info.st_size), PROT_READ, MAP_SHARED, fd, 0);
    if (map != MAP_FAILED) {
      m_map = static_cast<const char *>(map);
      m_size = static_cast<size_t>(info.st_size);
    }
  }
  close(fd);
  // The count must agree with the entries the file holds.
  if (!m_map || load32(m_map) != kWordOrderMagic || load32(m_map + 8) != m_size / 4 - kHeaderWords) return;
  m_count = m_size / 4 - kHeaderWords;
  m_usedBytes = load32(m_map + 4);
}

CWordOrder::~CWordOrder() {
  if (m_map) munmap(const_cast<char *>(m_map), m_size);
}

int64_t CWordOrder::lowerBound(CTextStorage &words, const std::string &prefix) const {
  size_t low = 0, high = m_count;
  while (low < high) {
    const size_t middle = low + (high - low) / 2;
    const char *text = wordText(words, entry(middle));
    if (!text) return -1;
    if (textBefore(text, prefix.c_str()))
      low = middle + 1;
    else
      high = middle;
  }
  return static_cast<int64_t>(low);
}

bool CWordOrder::withPrefix(CTextStorage &words, const std::string &prefix, std::vector<uint32_t> &out) const {
  if (!usable(words)) return false;
  const int64_t first = lowerBound(words, prefix);
  if (first < 0) return false;
  const char *previous = nullptr;
  for (size_t i = static_cast<size_t>(first); i < m_count; ++i) {
    const char *text = wordText(words, entry(i));
    if (!text || (previous && !textBefore(previous, text))) return false;
    if (std::strncmp(text, prefix.c_str(), prefix.size()) != 0) break;
    out.push_back(entry(i));
    previous = text;
  }
  return true;
}
