// The word order: prefixes answered in byte order, and no answer from a stale or damaged file.
#include "storage/word_order.h"

#include "test_support.h"

using namespace kurvo_test;

namespace {

class WordOrder : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char *word : {"beta", "alpha", "alp", "b\xE9", "zeta", "al", "alpine"}) words.addText(word);
    writeWordOrder(words, path, CWordOrder(path));
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
  // clang-format off
  const std::pair<std::string, Texts> cases[] = {
      {"al", {"al", "alp", "alpha", "alpine"}}, {"alph", {"alpha"}}, {"b", {"beta", "b\xE9"}},
      {"", {"al", "alp", "alpha", "alpine", "beta", "b\xE9", "zeta"}}, {"zeta", {"zeta"}}, {"zz", {}}, {"A", {}}};
  // clang-format on
  for (const auto &[prefix, texts] : cases) EXPECT_EQ(withPrefix(prefix), texts) << prefix;
  EXPECT_EQ(wordAt(readFile(path), 0), kWordOrderMagic);
}

TEST_F(WordOrder, AStaleOrDamagedFileGivesNoAnswer) {
  const std::string sound = readFile(path);
  std::string badEntry = sound;
  store32(&badEntry[12], 3);
  // clang-format off
  const std::pair<const char *, std::string> files[] = {
      {"missing", ""}, {"cut", sound.substr(0, sound.size() - 4)}, {"longer", sound + std::string(4, '\0')},
      {"magic", "x" + sound.substr(1)}, {"not an entry", badEntry}};
  // clang-format on
  for (const auto &[name, bytes] : files) {
    writeFile(path, bytes);
    EXPECT_EQ(withPrefix("al"), std::vector<std::string>{"none"}) << name;
  }
  writeFile(path, sound);
  words.addText("alpaca");
  EXPECT_EQ(withPrefix("al"), std::vector<std::string>{"none"}) << "a word added since";
}

TEST_F(WordOrder, AnOrderExtendedByTheWordsAddedSinceIsTheOrderWrittenAfresh) {
  // Rounds of words added to the table: few (put in one by one) and many
  // (sorted again), before, between and after the words there, and words
  // alike in their first eight bytes.
  const std::vector<std::vector<std::string>> rounds = {
      {"alpaca"}, {"0first", "zzlast", "beta2"}, {"abcdefgh1", "abcdefgh0", "abcdefgh", "b\xE8"}, {}};
  for (int i = 0; i < 2000; ++i) words.addText(("w" + std::to_string(i * 7919 % 2000)).c_str());
  writeWordOrder(words, path, CWordOrder(path));
  int serial = 0;
  for (std::vector<std::string> round : rounds) {
    if (round.empty())
      for (int i = 0; i < 300; ++i) round.push_back("many" + std::to_string(i * 7919 % 1000));
    for (const std::string &word : round) words.addText(word.c_str());
    const std::string afresh = dir.file("afresh" + std::to_string(++serial));
    writeWordOrder(words, afresh, CWordOrder(afresh));
    writeWordOrder(words, path, CWordOrder(path));
    EXPECT_EQ(readFile(path), readFile(afresh)) << serial;
    EXPECT_TRUE(CWordOrder(path).usable(words));
  }
}
