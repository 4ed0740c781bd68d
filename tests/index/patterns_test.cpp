// Include and exclude patterns, analyzer choice and the analyzer registry.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "analyzers/file_analyzer.h"
#include "api/message_keys.h"
#include "index/kurvo_index.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::TempDir;
using kurvo_test::throwsKurvo;

namespace {

class Patterns : public ::testing::Test {
 protected:
  void SetUp() override {
    index = std::make_unique<CKurvoIndex>(true, dir.path());
    index->createAnalyzers();
  }
  TempDir dir;
  CapturedMessages messages;
  std::unique_ptr<CKurvoIndex> index;
};

TEST_F(Patterns, RegistryHoldsTheGenericAnalyzer) {
  ASSERT_EQ(index->analyzers.count("generic"), 1u);
  EXPECT_NE(index->analyzerNamed("generic"), nullptr);
  EXPECT_EQ(index->analyzerNamed("nonesuch"), nullptr);
  // Creating again replaces the registry rather than adding to it.
  index->createAnalyzers();
  EXPECT_EQ(index->analyzers.size(), 1u);
  EXPECT_NE(index->analyzerNamed("generic"), nullptr);
  index->clearAnalyzers();
  EXPECT_TRUE(index->analyzers.empty());
}

TEST_F(Patterns, CountSettersMakeEmptyTerminatedArrays) {
  index->setIncludeCount(3);
  index->setExcludeCount(2);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(index->includePatterns[i], nullptr);
    EXPECT_EQ(index->includeAnalyzers[i], nullptr);
  }
  for (int i = 0; i < 3; ++i) EXPECT_EQ(index->excludePatterns[i], nullptr);
  index->setIncludeCount(0);
  index->setExcludeCount(0);
  EXPECT_EQ(index->includePatterns, nullptr);
  EXPECT_EQ(index->includeAnalyzers, nullptr);
  EXPECT_EQ(index->excludePatterns, nullptr);
}

TEST_F(Patterns, IncludePatternWithoutAnalyzerNameUsesGeneric) {
  index->setIncludeCount(2);
  index->setIncludePattern(0, "*.txt", nullptr);
  index->setIncludePattern(1, "*.text", "");
  EXPECT_STREQ(index->includePatterns[0], "*.txt");
  EXPECT_EQ(index->includeAnalyzers[0], index->analyzerNamed("generic"));
  EXPECT_EQ(index->includeAnalyzers[1], index->analyzerNamed("generic"));
  EXPECT_TRUE(messages.warnings.empty());
}

TEST_F(Patterns, PatternsAreCopies) {
  char text[] = "*.txt";
  index->setIncludeCount(1);
  index->setExcludeCount(1);
  index->setIncludePattern(0, text, "generic");
  index->setExcludePattern(0, text);
  std::strcpy(text, "*.doc");
  EXPECT_STREQ(index->includePatterns[0], "*.txt");
  EXPECT_STREQ(index->excludePatterns[0], "*.txt");
}

TEST_F(Patterns, UnknownAnalyzerWarnsAndLeavesThePatternStored) {
  index->setIncludeCount(1);
  EXPECT_TRUE(throwsKurvo([&] { index->setIncludePattern(0, "*.xyz", "nonesuch"); }));
  ASSERT_EQ(messages.warnings.size(), 1u);
  EXPECT_EQ(messages.warnings[0].key, kurvo_keys::kAnalyzerNotFound);
  EXPECT_EQ(messages.warnings[0].argument, "nonesuch");
  EXPECT_TRUE(messages.errors.empty());
  ASSERT_NE(index->includePatterns[0], nullptr);
  EXPECT_STREQ(index->includePatterns[0], "*.xyz");
  EXPECT_EQ(index->includeAnalyzers[0], nullptr);
}

TEST_F(Patterns, UnknownAnalyzerKeepsTheSlotsEarlierAnalyzer) {
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.txt", "generic");
  EXPECT_TRUE(throwsKurvo([&] { index->setIncludePattern(0, "*.xyz", "nonesuch"); }));
  EXPECT_STREQ(index->includePatterns[0], "*.xyz");
  EXPECT_EQ(index->includeAnalyzers[0], index->analyzerNamed("generic"));
}

TEST_F(Patterns, IncludePatternsNeedTheRegistry) {
  index->clearAnalyzers();
  index->setIncludeCount(1);
  EXPECT_TRUE(throwsKurvo([&] { index->setIncludePattern(0, "*.txt", nullptr); }));
  ASSERT_EQ(messages.warnings.size(), 1u);
  EXPECT_EQ(messages.warnings[0].argument, "generic");
}

TEST_F(Patterns, FirstMatchingIncludePatternDecides) {
  index->setIncludeCount(3);
  index->setIncludePattern(0, "*.txt|*.text", "generic");
  // Its analyzer stays null: the pattern is stored despite the warning.
  EXPECT_TRUE(throwsKurvo([&] { index->setIncludePattern(1, "*.dat", "nonesuch"); }));
  index->setIncludePattern(2, "*", "generic");
  CFileAnalyzer *generic = index->analyzerNamed("generic");
  EXPECT_EQ(index->analyzerThatMatches("notes.TXT"), generic);
  // Only the first term of an include pattern counts: "*" takes this one.
  EXPECT_EQ(index->analyzerThatMatches("notes.text"), generic);
  // A matching pattern without analyzer ends the search with none.
  EXPECT_EQ(index->analyzerThatMatches("table.dat"), nullptr);
}

TEST_F(Patterns, NoIncludeArrayMeansNoAnalyzer) {
  EXPECT_EQ(index->analyzerThatMatches("a.txt"), nullptr);
  index->setIncludeCount(1);
  index->setIncludePattern(0, "*.txt", nullptr);
  EXPECT_EQ(index->analyzerThatMatches("a.doc"), nullptr);
}

TEST_F(Patterns, ExcludedByAnyPatternWithTheFullLanguage) {
  EXPECT_EQ(index->isExcluded("a.o"), 0);
  index->setExcludeCount(2);
  index->setExcludePattern(0, "*.o|*.obj");
  index->setExcludePattern(1, "*.c&^keep*");
  EXPECT_EQ(index->isExcluded("main.OBJ"), 1);
  EXPECT_EQ(index->isExcluded("main.o"), 1);
  EXPECT_EQ(index->isExcluded("main.c"), 1);
  EXPECT_EQ(index->isExcluded("keep.c"), 0);
  EXPECT_EQ(index->isExcluded("main.h"), 0);
}

TEST_F(Patterns, MemberDirMatchUsesThePatternLanguage) {
  EXPECT_EQ(index->dirMatch("/Users/bob", "/Users/*/Documents/*.txt"), 1);
  EXPECT_EQ(index->dirMatch("/Applications", "/Users/*.txt"), 0);
}

}  // namespace
