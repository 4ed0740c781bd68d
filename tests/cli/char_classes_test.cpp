// Character classes as byte ranges, and the defaults words are cut with.
#include <gtest/gtest.h>

#include "char_classes.h"
#include "host_error.h"

using namespace kurvo_cli;

TEST(CharClasses, DefaultsAreLatinLettersAndDigits) {
  CharClasses c = defaultCharClasses();
  EXPECT_EQ(formatByteRanges(c.wordStart), "30-39,41-5a,61-7a,c0-d6,d8-f6,f8-ff");
  EXPECT_EQ(c.wordRest, c.wordStart);
  EXPECT_EQ(formatByteRanges(c.viewable), "09,20-7e,a0-ff");
  EXPECT_TRUE(c.nonAlpha['7']);
  EXPECT_FALSE(c.nonAlpha['a']);
}

TEST(CharClasses, RangesRoundTrip) {
  for (const char *text : {"", "ff", "00-ff", "01,03,05-07"}) {
    EXPECT_EQ(formatByteRanges(parseByteRanges(text, "test")), text);
  }
  // Lenient about case and empty items.
  EXPECT_EQ(formatByteRanges(parseByteRanges("5F,,41-5A,", "test")), "41-5a,5f");
}

TEST(CharClasses, BadRangesAreRefused) {
  for (const char *text : {"g0", "100", "39-30", "1-"}) EXPECT_THROW(parseByteRanges(text, "test"), HostError) << text;
}
