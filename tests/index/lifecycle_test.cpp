// Index lifecycle: an index stored into its summary and reopened from it.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "index_setup.h"

using namespace kurvo_test;

TEST(Lifecycle, StoredIndexReopensWithEveryWordAndRecord) {
  TempDir dir;
  CapturedMessages messages;
  auto index = std::make_unique<CKurvoIndex>(true, dir.path());
  setWordMasks(*index);
  index->indexExcludedWord("and");
  index->newFileLinks();
  std::map<std::string, uint32_t> records;
  records["/docs"] = index->files->addFile("/docs");
  for (const char *name : {"one.txt", "two.txt"}) {
    records[name] = index->files->addFile(name);
    file_record::setParent(index->files->getData(records[name]), records["/docs"]);
  }
  for (const char *w : {"alpha", "beta", "gamma", "alpha"}) index->indexWord(w, records["one.txt"]);
  for (const char *w : {"beta", "delta", "and"}) index->indexWord(w, records["two.txt"]);
  index->compressLinks();
  const std::map<std::string, uint32_t> words = allWords(*index->words);
  std::map<uint32_t, WordFiles> lists;
  for (const auto &[text, number] : words) lists[number] = readWordFiles(*index, number);
  index->storeStorage(dir.path());
  EXPECT_FALSE(index->words->isWritable());
  index.reset();

  CKurvoIndex reopened(false, dir.path());
  EXPECT_TRUE(messages.errors.empty());
  EXPECT_EQ(allWords(*reopened.words), words);
  EXPECT_EQ(words.count("and"), 0u);
  EXPECT_NE(reopened.skipWords->lookup("AND"), 0u);
  for (const auto &[number, list] : lists) {
    const WordFiles again = readWordFiles(reopened, number);
    EXPECT_EQ(again.current, list.current) << number;
    EXPECT_EQ(again.counter, list.counter) << number;
    EXPECT_EQ(again.blocks, list.blocks) << number;
  }
  EXPECT_EQ(readWordFiles(reopened, words.at("beta")).blocks,
            (std::vector<std::vector<FileLink>>{{{records["one.txt"], 0}}}));
  EXPECT_EQ(reopened.files->lookupFile("/DOCS", 0), records["/docs"]);
  EXPECT_EQ(reopened.files->lookupFile("one.txt", records["/docs"]), records["one.txt"]);
  EXPECT_EQ(reopened.files->lookupFile("TWO.TXT", records["/docs"]), records["two.txt"]);
}
