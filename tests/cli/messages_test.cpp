// Every message key of the library has an English sentence with its argument.
#include <gtest/gtest.h>

#include "report/message_keys.h"
#include "messages.h"

using namespace kurvo_cli;
namespace k = kurvo_keys;

class EveryKey : public ::testing::TestWithParam<const char *> {};

TEST_P(EveryKey, HasItsOwnSentence) {
  std::string text = describeMessage(GetParam(), "ARG");
  EXPECT_EQ(text.find("the library reported"), std::string::npos);
  EXPECT_EQ(text.find("%s"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, EveryKey,
    ::testing::Values(k::kAnalyzerNotFound, k::kStorageReadError, k::kStorageByteOrder, k::kHaltRequested, k::kPruneParentError,
                      k::kSkipOpenFail, k::kExternalAnalyzersFileTooBig, k::kAssertionFailed, k::kEndOfContents,
                      k::kNoFileContentsForDir, k::kArchivesNestedTooDeep, k::kArchiveExtractError,
                      k::kCannotOpenContentsFile, k::kNoMemory, k::kUnmapFail, k::kFileMapWriteFail,
                      k::kMemFileOpenFail, k::kMemFileExtendFail, k::kFileMapOpenRWFail, k::kGetHugeSpace,
                      k::kSkippedKurvoDirectory, k::kIndexingFile, k::kIndexingExcluded, k::kBytesIndexing,
                      k::kDecodingGeneric, k::kDecodingPdf, k::kCountingCompress, k::kCompLinksFmt, k::kDone,
                      k::kUpdatingStatus, k::kExternalAnalyzerRejected,
                      k::kArchiveTooDeep, k::kArchiveTooLarge));

TEST(Messages, PathsAppearInTheSentence) {
  EXPECT_EQ(describeMessage("SkipOpenFail", "/h/skipfile.txt"), "the skip-word file /h/skipfile.txt cannot be opened");
  EXPECT_NE(describeMessage("MemFileExtendFail", "123456").find("123456 bytes"), std::string::npos);
}

TEST(Messages, UnknownKeysAreStillReported) {
  EXPECT_EQ(describeMessage("SomethingNew", "x"), "the library reported \"SomethingNew\" (x)");
  EXPECT_EQ(describeMessage("SomethingNew", ""), "the library reported \"SomethingNew\"");
}
