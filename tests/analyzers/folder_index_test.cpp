// Indexing a small folder file by file, checked byte for byte against a model of the tables.
#include <cctype>

#include "test_support.h"

using kurvo_test::AnalyzerTest;

namespace {

std::string bytes32(uint32_t v) {
  std::string out(4, '\0');
  store32(&out[0], v);
  return out;
}

// The word table and the word links as the index should leave them, worked
// out from the texts alone.
class TableModel {
 public:
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

  // Each entry: next in bucket, current file, counter, 2 + 4 spare bytes, earlier files, text.
  std::string wordTable() const {
    std::string out;
    for (const Entry &e : m_entries) {
      std::string counter(2, '\0');
      store16(&counter[0], e.counter);
      out += bytes32(e.next) + bytes32(e.file) + counter + std::string(6, '\0') + bytes32(e.earlier) + e.text + '\0';
    }
    return out;
  }
  const std::string &wordLinks() const { return m_links; }
  size_t wordCount() const { return m_entries.size(); }

 private:
  struct Entry {
    std::string text;
    uint32_t number, bucket, next = 0, file = 0;
    uint16_t counter = 0;
    uint32_t earlier = 0;
  };

  Entry &entryFor(const std::string &text) {
    auto found = m_byText.find(text);
    if (found != m_byText.end()) return m_entries[found->second];
    uint32_t h = 0;  // lower-case ASCII folds to itself
    for (unsigned char c : text) h = h * 33 + c;
    Entry e{text, m_end + 20, h % 40000};
    m_end += 20 + static_cast<uint32_t>(text.size()) + 1;
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
    if (e.file != 0 && e.file != file) {
      if (e.file != m_linkFile) {
        if (m_linkFile != 0) m_links += bytes32(0) + '\0';
        m_links += bytes32(e.file);
        m_linkFile = e.file;
      }
      m_links += bytes32(e.number) + static_cast<char>(e.counter);
      e.counter = 0;
      e.earlier += 1;
    } else if (e.file == file && e.counter != 255) {
      e.counter += 1;
    }
    e.file = file;
  }

  std::vector<Entry> m_entries;
  std::map<std::string, size_t> m_byText;
  uint32_t m_end = 16;
  std::string m_links;
  uint32_t m_linkFile = 0;
};

std::string regionBytes(const CFileMemory &memory) { return std::string(memory.getPointer(16), memory.getUsed() - 16); }

TEST_F(AnalyzerTest, FolderOfFilesGivesExactWordTableAndLinks) {
  const std::vector<std::pair<std::string, std::string>> texts = {
      {"one.txt", "The quick brown fox jumps over the lazy dog.\nThe DOG sleeps; the fox runs 42 laps.\n"},
      {"two.txt",
       "Lazy afternoons: the dog and the cat share 1234 naps,\n"
       "abcdefghijklmnopq abcdefghijklmnopqr\n"},
      {"three.txt", "fox fox fox cat\tthe\n"},
      {"four.txt", "brand new words only here\r\n"}};
  const uint32_t folder = index->files->addFile(data.path().c_str());
  TableModel model;
  for (const auto &[name, text] : texts) {
    const uint32_t file = index->files->addFile(name.c_str());
    file_record::setParent(index->files->getData(file), folder);
    ASSERT_TRUE(analyzer->indexFile(dataFile(name, text).c_str(), file));
    model.indexText(text, file);
  }
  EXPECT_EQ(regionBytes(*index->words), model.wordTable());
  EXPECT_EQ(regionBytes(*index->wordLinks), model.wordLinks());
  EXPECT_EQ(index->WordsIndexed, model.wordCount());
}

}  // namespace
