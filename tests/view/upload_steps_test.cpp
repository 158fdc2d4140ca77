// What is done around an upload, and in which order.
#include "view/upload_steps.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"

namespace vexa {
namespace {

// The steps of a run in letters, where the ends of the steps are given: d done, n not done, a begin again.
std::string Steps(const TransferSettings& settings, const std::string& ends) {
  std::string steps;
  bool copied = false;
  UploadStep step = FirstUploadStep(settings);
  for (const char end : ends) {
    if (step == UploadStep::kEnd) break;
    steps += "csv."[static_cast<int>(step)];
    copied |= step == UploadStep::kCopy && end == 'd';
    step = NextUploadStep(step,
                          end == 'd'   ? StepEnd::kDone
                          : end == 'n' ? StepEnd::kNotDone
                                       : StepEnd::kBeginAgain,
                          settings, copied);
  }
  return steps + "csv."[static_cast<int>(step)];
}

TEST(UploadSteps, NothingIsSentWithoutItsCopyAndNothingComparedThatWasNotSent) {
  const struct {
    bool verify, copy;
    const char *ends, *steps;
  } rows[] = {{false, false, "d", "s."},     {false, false, "n", "s."},   {true, false, "dd", "sv."},
              {true, false, "n", "s."},      {true, true, "ddd", "csv."}, {true, true, "n", "c."},
              {true, true, "dn", "cs."},     {false, true, "dd", "cs."},  {true, true, "daddd", "cssv."},
              {true, true, "aadd", "cccsv"}, {true, false, "an", "ss."}};
  for (const auto& row : rows)
    EXPECT_EQ(Steps({row.verify, row.copy, ""}, row.ends), row.steps) << row.ends << row.verify << row.copy;
}

TEST(UploadSteps, ABoxTickedWhileNobodyAnswersCountsAtOnce) {
  EXPECT_TRUE(CallsForCopy({false, true, ""}, false, false));
  EXPECT_FALSE(CallsForCopy({false, true, ""}, false, true)) << "the receiver is awake";
  EXPECT_FALSE(CallsForCopy({false, true, ""}, true, false)) << "there is one";
  EXPECT_FALSE(CallsForCopy({true, false, ""}, false, false));
}

TEST(UploadSteps, CopiesLieInTheDocumentsUnlessAFolderWasChosen) {
  const Path documents = PathFromUtf8("home") / "Documents", standard = documents / "Vexa Editor Copies";
  EXPECT_EQ(CopyFolderIn({}, documents), standard);
  EXPECT_EQ(CopyFolderIn({false, false, "else"}, documents), PathFromUtf8("else"));
  EXPECT_EQ(CopyFolderText(" " + Utf8FromPath(standard), documents), "");
  EXPECT_EQ(CopyFolderText(" else ", documents), "else");
  EXPECT_EQ(CopyFolderText("", documents), "");
}

}  // namespace
}  // namespace vexa
