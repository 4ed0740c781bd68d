// The word order: prefixes answered in byte order, and no answer from a stale or damaged file.
#include "storage/word_order.h"

#include "test_support.h"

using namespace kurvo_test;

namespace {

class WordOrder : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char *word : {"beta", "alpha", "alp", "b\xE9", "zeta", "al", "alpine"}) words.addText(word);
    writeWordOrder(words, path);
  }
  // The texts beginning with prefix, or "none" when the order gives no answer.
  std::vector<std::string> withPrefix(const std::string &prefix) {
    std::vector<uint32_t> entries;
    if (!CWordOrder(path).withPrefix(words, prefix, entries)) return {"none"};
    std::vector<std::string> texts;
    for (uint32_t e : entries) texts.push_back(words.getText(e));
    return texts;
  }

  TempDir dir;
  CTextStorage words{dir.file("words"), 1024, 4096, 16, 100};
  std::string path = dir.file("wordorder");
};

}  // namespace

TEST_F(WordOrder, PrefixesGiveTheirWordsInByteOrder) {
  using Texts = std::vector<std::string>;
  const std::pair<std::string, Texts> cases[] = {{"al", {"al", "alp", "alpha", "alpine"}},
                                                 {"alph", {"alpha"}},
                                                 {"b", {"beta", "b\xE9"}},
                                                 {"", {"al", "alp", "alpha", "alpine", "beta", "b\xE9", "zeta"}},
                                                 {"zeta", {"zeta"}},
                                                 {"zz", {}},
                                                 {"A", {}}};
  for (const auto &[prefix, texts] : cases) EXPECT_EQ(withPrefix(prefix), texts) << prefix;
  EXPECT_EQ(wordAt(readFile(path), 0), kWordOrderMagic);
}

TEST_F(WordOrder, AStaleOrDamagedFileGivesNoAnswer) {
  const std::string sound = readFile(path);
  std::string badEntry = sound;
  store32(&badEntry[12], 3);
  const std::pair<const char *, std::string> files[] = {{"missing", ""},
                                                        {"cut", sound.substr(0, sound.size() - 4)},
                                                        {"longer", sound + std::string(4, '\0')},
                                                        {"magic", "x" + sound.substr(1)},
                                                        {"not an entry", badEntry}};
  for (const auto &[name, bytes] : files) {
    writeFile(path, bytes);
    EXPECT_EQ(withPrefix("al"), std::vector<std::string>{"none"}) << name;
  }
  writeFile(path, sound);
  words.addText("alpaca");
  EXPECT_EQ(withPrefix("al"), std::vector<std::string>{"none"}) << "a word added since";
}
