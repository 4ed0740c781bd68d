// The three host callbacks: errors throw 1 after their callback, with or without one; statuses carry their origin.
#include "report/message_keys.h"
#include "report/reporting.h"
#include "test_support.h"

using namespace kurvo_test;

TEST(Reporting, WithoutCallbacksErrorsAndWarningsStillThrowOneAndStatusesAnswerOne) {
  kSetThrowCallBack(nullptr), kSetWarningCallBack(nullptr), kSetStatusCallBack(nullptr);
  int thrown = 0;
  try {
    throwKurvoError(kurvo_keys::kStorageReadError, "/x/");
  } catch (int v) {
    thrown = v;
  }
  EXPECT_EQ(thrown, 1);
  EXPECT_TRUE(throwsKurvo([] { postWarning(kurvo_keys::kAnalyzerNotFound, "nope"); }));
  EXPECT_EQ(setStatus("Done", ""), 1);
}

TEST(Reporting, StatusCarriesOriginAndAnswer) {
  CapturedMessages msgs;
  msgs.statusAnswer = 7;
  EXPECT_EQ(setStatus("Done", ""), 7);
  EXPECT_EQ(kSetStatus("HostText", "arg"), 7);
  EXPECT_EQ(msgs.statusFromLibrary, (std::vector<int>{1, 0}));
  EXPECT_EQ(msgs.statuses.at(1).argument, "arg");
  testing::internal::CaptureStdout();
  EXPECT_EQ(kRawStdoutWrite("abc\n"), 4);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "abc\n");
}
