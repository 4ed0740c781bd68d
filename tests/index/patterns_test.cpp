// Include and exclude patterns, analyzer choice and the analyzer registry.

#include "test_support.h"

using namespace kurvo_test;

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

}  // namespace

TEST_F(Patterns, FirstMatchingIncludePatternDecidesTheAnalyzer) {
  EXPECT_EQ(index->analyzerThatMatches("a.txt"), nullptr);  // no include patterns
  index->setIncludeCount(4);
  index->setIncludePattern(0, "*.txt|*.text", nullptr);  // no name: "generic"
  // An unknown analyzer warns, and the pattern stays stored without one.
  EXPECT_TRUE(throwsKurvo([&] { index->setIncludePattern(1, "*.dat", "nonesuch"); }));
  EXPECT_EQ(messages.warnings, (std::vector<Message>{{"AnalyzerNotFound", "nonesuch"}}));
  EXPECT_TRUE(messages.errors.empty());
  EXPECT_STREQ(index->includePatterns[1], "*.dat");
  index->setIncludePattern(2, "*.md", "generic");
  CFileAnalyzer *generic = index->analyzerNamed("generic");
  ASSERT_NE(generic, nullptr);
  EXPECT_EQ(index->analyzerThatMatches("notes.TXT"), generic);
  // Only the first term of an include pattern counts.
  EXPECT_EQ(index->analyzerThatMatches("notes.text"), nullptr);
  // A matching pattern without analyzer ends the search with none.
  EXPECT_EQ(index->analyzerThatMatches("table.dat"), nullptr);
  EXPECT_EQ(index->analyzerThatMatches("x.md"), generic);
}

TEST_F(Patterns, IncludePatternsNeedTheRegistry) {
  index->clearAnalyzers();
  index->setIncludeCount(1);
  EXPECT_TRUE(throwsKurvo([&] { index->setIncludePattern(0, "*.txt", nullptr); }));
  EXPECT_EQ(messages.warnings, (std::vector<Message>{{"AnalyzerNotFound", "generic"}}));
}

TEST_F(Patterns, ExcludedByAnyPatternWithTheFullLanguage) {
  EXPECT_EQ(index->isExcluded("a.o"), 0);
  index->setExcludeCount(2);
  index->setExcludePattern(0, "*.o|*.obj");
  index->setExcludePattern(1, "*.c&^keep*");
  const std::pair<const char *, int> cases[] = {
      {"main.OBJ", 1}, {"main.o", 1}, {"main.c", 1}, {"keep.c", 0}, {"main.h", 0}};
  for (const auto &[name, excluded] : cases) EXPECT_EQ(index->isExcluded(name), excluded) << name;
}
