// Every message key of the library has an English sentence with its argument.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "report/message_keys.h"
#include "messages.h"

using namespace kurvo_cli;
namespace k = kurvo_keys;

// Each key the library sends has a sentence of the command's own and a line
// in the public header's list.
TEST(Messages, EveryKeyIsExplainedAndListed) {
  std::ifstream in(KURVO_HEADER);
  const std::string header((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  ASSERT_FALSE(header.empty());
  for (const char *key : k::kAllKeys) {
    SCOPED_TRACE(key);
    const std::string text = describeMessage(key, "ARG");
    EXPECT_EQ(text.find("the library reported"), std::string::npos);
    EXPECT_EQ(text.find("%s"), std::string::npos);
    EXPECT_NE(header.find('"' + std::string(key) + '"'), std::string::npos);
  }
}

TEST(Messages, PathsAppearInTheSentence) {
  EXPECT_EQ(describeMessage("SkipOpenFail", "/h/skipfile.txt"), "the skip-word file /h/skipfile.txt cannot be opened");
  EXPECT_NE(describeMessage("MemFileExtendFail", "123456").find("123456 bytes"), std::string::npos);
}

TEST(Messages, UnknownKeysAreStillReported) {
  EXPECT_EQ(describeMessage("SomethingNew", "x"), "the library reported \"SomethingNew\" (x)");
  EXPECT_EQ(describeMessage("SomethingNew", ""), "the library reported \"SomethingNew\"");
}
