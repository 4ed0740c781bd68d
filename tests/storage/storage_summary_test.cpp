// The summary file: four table descriptions back to back, read back in the same order.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "storage/file_links.h"
#include "storage/file_storage.h"
#include "storage/lower_case_table.h"
#include "storage/text_storage.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;

TEST(StorageSummary, DescriptionsFollowEachOtherInOneFile) {
  mapLowerCaseChars();
  TempDir dir;
  const std::string summary = dir.file("hash");
  uint32_t folder, word, skip, list;
  {
    CFileStorage files(dir.file("files"), 1000);
    CTextStorage words(dir.file("words"), 131071, 1048575, 16, 40000);
    CTextStorage skipWords(dir.file("skipped"), 32767, 65535, 0, 1000);
    CFileLinks links(dir.file("links"), 65535, 1048575, 1);
    folder = files.addFile("/top");
    word = words.addText("kurvo");
    skip = skipWords.addText("the");
    links.getSpace(4);
    list = links.getSpace(2 * 5 + 4);
    links.addFile(list, folder, 2);
    links.setNextList(list + 10, 0);

    FILE *out = std::fopen(summary.c_str(), "wb");
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(files.store(out));
    EXPECT_TRUE(words.store(out));
    EXPECT_TRUE(skipWords.store(out));
    EXPECT_TRUE(links.store(out));
    std::fclose(out);
  }
  // files: 4 + 1000 words; words: 5 + 40000; skipped: 5 + 1000; links: 2.
  EXPECT_EQ(kurvo_test::readFile(summary).size(), 4u * (1004 + 40005 + 1005 + 2));

  FILE *in = std::fopen(summary.c_str(), "rb");
  ASSERT_NE(in, nullptr);
  CapturedMessages msgs;
  CFileStorage files(dir.file("files"), in);
  CTextStorage words(dir.file("words"), in);
  CTextStorage skipWords(dir.file("skipped"), in);
  CFileLinks links(dir.file("links"), in);
  std::fclose(in);
  EXPECT_TRUE(msgs.errors.empty());
  EXPECT_EQ(files.lookupFile("/TOP", 0), folder);
  EXPECT_EQ(words.lookup("Kurvo"), word);
  EXPECT_EQ(skipWords.lookup("THE"), skip);
  uint32_t pos = list;
  unsigned char count = 0;
  EXPECT_EQ(links.getFile(pos, count), folder);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(links.getFile(pos, count), 0u);
  EXPECT_EQ(links.getNextList(pos), 0u);
}
