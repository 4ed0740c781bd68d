// The three host callbacks and the reporting entries.

#include "report/message_keys.h"
#include "report/reporting.h"
#include "test_support.h"

using kurvo_test::CapturedMessages;
using kurvo_test::throwsKurvo;

TEST(Reporting, ErrorsAndWarningsReachTheirCallbackThenThrowOne) {
  CapturedMessages msgs;
  int thrown = 0;
  try {
    throwKurvoError(kurvo_keys::kStorageReadError, "/x/");
  } catch (int v) {
    thrown = v;
  }
  EXPECT_EQ(thrown, 1);
  EXPECT_TRUE(throwsKurvo([] { postWarning(kurvo_keys::kAnalyzerNotFound, "nope"); }));
  ASSERT_EQ(msgs.errors.size(), 1u);
  ASSERT_EQ(msgs.warnings.size(), 1u);
  EXPECT_EQ(msgs.errors[0].key, "StorageReadError");
  EXPECT_EQ(msgs.errors[0].argument, "/x/");
  EXPECT_EQ(msgs.warnings[0].key, "AnalyzerNotFound");
}

TEST(Reporting, WithoutCallbacksErrorsStillThrowAndStatusAnswersOne) {
  kSetThrowCallBack(nullptr);
  kSetWarningCallBack(nullptr);
  kSetStatusCallBack(nullptr);
  EXPECT_TRUE(throwsKurvo([] { throwKurvoError(kurvo_keys::kNoMemory, ""); }));
  EXPECT_EQ(setStatus("Done", ""), 1);
  EXPECT_EQ(kSetStatus("Mine", "x"), 1);
}

TEST(Reporting, StatusCarriesOriginAndAnswer) {
  CapturedMessages msgs;
  msgs.statusAnswer = 7;
  EXPECT_EQ(setStatus("Done", ""), 7);
  EXPECT_EQ(kSetStatus("HostText", "arg"), 7);
  ASSERT_EQ(msgs.statuses.size(), 2u);
  EXPECT_EQ(msgs.statusFromLibrary[0], 1);
  EXPECT_EQ(msgs.statusFromLibrary[1], 0);
  EXPECT_EQ(msgs.statuses[1].argument, "arg");
}

TEST(Reporting, RawStdoutWriteGivesTheBytesWritten) {
  EXPECT_EQ(kRawStdoutWrite(""), 0);
  testing::internal::CaptureStdout();
  int n = kRawStdoutWrite("abc\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "abc\n");
  EXPECT_EQ(n, 4);
}
