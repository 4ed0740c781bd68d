// Indexing a small folder file by file, checked byte for byte against a model of the tables.
#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "analyzer_fixture.h"
#include "storage/byte_io.h"
#include "storage/file_storage.h"

using kurvo_test::AnalyzerTest;

namespace {

using Bytes = std::vector<unsigned char>;

void append32(Bytes &out, uint32_t v) {
  unsigned char b[4];
  store32(b, v);
  out.insert(out.end(), b, b + 4);
}

void append16(Bytes &out, uint16_t v) {
  unsigned char b[2];
  store16(b, v);
  out.insert(out.end(), b, b + 2);
}

// The word table, its per-word data and the word links as the index should
// leave them, worked out from the texts alone.
class TableModel {
 public:
  static constexpr uint32_t kBuckets = 40000;
  static constexpr uint32_t kPrefix = 20;

  void indexText(const std::string &text, uint32_t file) {
    std::string word;
    for (unsigned char c : text) {
      if (std::isalnum(c)) {
        word.push_back(static_cast<char>(std::tolower(c)));
        continue;
      }
      // Minimum 3; maximum 16 plus the one-character allowance.
      if (word.size() >= 3 && word.size() <= 17) indexWord(word, file);
      word.clear();
    }
  }

  Bytes wordTable() const {
    Bytes out;
    for (const Entry &e : m_entries) {
      append32(out, e.next);
      append32(out, e.file);
      append16(out, e.counter);
      append16(out, 0);
      append32(out, 0);
      append32(out, e.earlier);
      out.insert(out.end(), e.text.begin(), e.text.end());
      out.push_back(0);
    }
    return out;
  }
  const Bytes &wordLinks() const { return m_links; }
  size_t wordCount() const { return m_entries.size(); }

 private:
  struct Entry {
    std::string text;
    uint32_t number;
    uint32_t bucket;
    uint32_t next = 0;
    uint32_t file = 0;
    uint16_t counter = 0;
    uint32_t earlier = 0;
  };

  static uint32_t bucketOf(const std::string &text) {
    uint32_t h = 0;
    for (unsigned char c : text) {
      // Plain ASCII words fold to themselves here: letters are already lower.
      h = h * 33 + static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(c)));
    }
    return h % kBuckets;
  }

  Entry &entryFor(const std::string &text) {
    auto found = m_byText.find(text);
    if (found != m_byText.end()) return m_entries[found->second];
    Entry e{text, m_end + kPrefix, bucketOf(text)};
    m_end += kPrefix + static_cast<uint32_t>(text.size()) + 1;
    for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
      if (it->bucket == e.bucket && it->next == 0) {
        it->next = e.number;
        break;
      }
    }
    m_byText[text] = m_entries.size();
    m_entries.push_back(e);
    return m_entries.back();
  }

  void indexWord(const std::string &text, uint32_t file) {
    Entry &e = entryFor(text);
    if (e.file == 0) {
      e.file = file;
    } else if (e.file != file) {
      addLink(e.file, e.number, static_cast<unsigned char>(e.counter));
      e.file = file;
      e.counter = 0;
      e.earlier += 1;
    } else if (e.counter != 255) {
      e.counter += 1;
    }
  }

  void addLink(uint32_t file, uint32_t word, unsigned char count) {
    if (file != m_linkFile) {
      if (m_linkFile != 0) {
        append32(m_links, 0);
        m_links.push_back(0);
      }
      m_linkFile = file;
      append32(m_links, file);
    }
    append32(m_links, word);
    m_links.push_back(count);
  }

  std::vector<Entry> m_entries;
  std::map<std::string, size_t> m_byText;
  uint32_t m_end = 16;
  Bytes m_links;
  uint32_t m_linkFile = 0;
};

Bytes regionBytes(const CFileMemory &memory) {
  const uint32_t used = memory.getUsed();
  if (used <= 16) return {};
  const char *p = memory.getPointer(16);
  return Bytes(p, p + (used - 16));
}

TEST_F(AnalyzerTest, FolderOfFilesGivesExactWordTableAndLinks) {
  const std::vector<std::pair<std::string, std::string>> texts = {
      {"one.txt",
       "The quick brown fox jumps over the lazy dog.\nThe DOG sleeps; the fox runs 42 laps.\n"},
      {"two.txt",
       "Lazy afternoons: the dog and the cat share 1234 naps,\n"
       "abcdefghijklmnopq abcdefghijklmnopqr\n"},
      {"three.txt", "fox fox fox cat\tthe\n"},
      {"four.txt", "brand new words only here\r\n"},
  };
  index->UseRanking = 1;
  const uint32_t folder = index->files->addFile(data.path().c_str());
  TableModel model;
  double bytes = 0;
  for (const auto &[name, text] : texts) {
    const std::string path = dataFile(name, text);
    const uint32_t file = index->files->addFile(name.c_str());
    file_record::setParent(index->files->getData(file), folder);
    ASSERT_TRUE(analyzer->indexFile(path.c_str(), file));
    model.indexText(text, file);
    bytes += static_cast<double>(text.size());
  }

  EXPECT_EQ(regionBytes(*index->words), model.wordTable());
  EXPECT_EQ(regionBytes(*index->wordLinks), model.wordLinks());
  EXPECT_EQ(index->WordsIndexed, model.wordCount());
  EXPECT_EQ(index->ContentsIndexed, texts.size());
  EXPECT_DOUBLE_EQ(index->BytesRead, bytes);
  EXPECT_NE(index->words->lookup("abcdefghijklmnopq"), 0u);
  EXPECT_EQ(index->words->lookup("abcdefghijklmnopqr"), 0u);
}

}  // namespace
