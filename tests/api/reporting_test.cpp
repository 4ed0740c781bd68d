// The three host callbacks: errors throw 1 after their callback, with or without one; statuses carry their origin.
#include "report/message_keys.h"
#include "report/reporting.h"
#include "test_support.h"

using namespace kurvo_test;

TEST(Reporting, ErrorsThrowOneWithOrWithoutACallback) {
  for (bool installed : {true, false}) {
    std::unique_ptr<CapturedMessages> msgs(installed ? new CapturedMessages : nullptr);
    if (!installed) kSetThrowCallBack(nullptr), kSetWarningCallBack(nullptr), kSetStatusCallBack(nullptr);
    int thrown = 0;
    try {
      throwKurvoError(kurvo_keys::kStorageReadError, "/x/");
    } catch (int v) {
      thrown = v;
    }
    EXPECT_EQ(thrown, 1);
    EXPECT_TRUE(throwsKurvo([] { postWarning(kurvo_keys::kAnalyzerNotFound, "nope"); }));
    EXPECT_EQ(setStatus("Done", ""), 1) << "without a callback the answer is 1";
    if (!msgs) continue;
    ASSERT_EQ(msgs->errors.size(), 1u);
    EXPECT_EQ(msgs->errors[0].argument, "/x/");
    EXPECT_EQ(msgs->warnings.at(0).key, "AnalyzerNotFound");
  }
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
