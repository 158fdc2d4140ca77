// What is done around an upload, and in which order.
#include "view/upload_steps.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"

namespace vexa {
namespace {

// The steps of a run in letters, where the ends of the steps are given: d done, n not done, a begin again.
std::string Steps(const TransferSettings& settings, const std::string& ends) {
  std::string steps;
  UploadSteps upload = FirstUploadStep(settings);
  for (const char end : ends) {
    if (upload.step == UploadStep::kEnd) break;
    steps += "csv."[static_cast<int>(upload.step)];
    GoOn(upload,
         end == 'd'   ? StepEnd::kDone
         : end == 'n' ? StepEnd::kNotDone
                      : StepEnd::kBeginAgain,
         settings);
  }
  return steps + "csv."[static_cast<int>(upload.step)] + (upload.copied ? "+" : "");
}

TEST(UploadSteps, NothingIsSentWithoutItsCopyAndNothingComparedThatWasNotSent) {
  const struct {
    bool verify, copy;
    const char *ends, *steps;
  } rows[] = {{false, false, "d", "s."},      {false, false, "n", "s."},    {true, false, "dd", "sv."},
              {true, false, "n", "s."},       {true, true, "ddd", "csv.+"}, {true, true, "n", "c."},
              {true, true, "dn", "cs.+"},     {false, true, "dd", "cs.+"},  {true, true, "dadd", "cscsv+"},
              {true, true, "aadd", "cccsv+"}, {true, false, "an", "ss."}};
  for (const auto& row : rows)
    EXPECT_EQ(Steps({row.verify, row.copy, ""}, row.ends), row.steps) << row.ends << row.verify << row.copy;
}

TEST(UploadSteps, ABoxTickedWhileNobodyAnswersCountsAtOnce) {
  EXPECT_TRUE(CallsForCopy({false, true, ""}, false, false));
  EXPECT_FALSE(CallsForCopy({false, true, ""}, false, true)) << "the receiver is awake";
  EXPECT_FALSE(CallsForCopy({false, true, ""}, true, false)) << "there is one";
  EXPECT_FALSE(CallsForCopy({true, false, ""}, false, false));
}

TEST(UploadSteps, NobodyTakesACopyForKeptThatWasNot) {
  EXPECT_EQ(CopyBoxText(false, false), "&Keep a copy of what is in the receiver");
  EXPECT_EQ(CopyBoxText(false, true), "&Keep a copy of what is in the receiver (from the next upload on)");
  for (const bool answered : {false, true})
    EXPECT_EQ(CopyBoxText(true, answered), "&Keep a copy of what is in the receiver (one was kept)");
  // A receiver that answers while the upload is given up for the copy.
  EXPECT_EQ(EndOfUpload(true, 0, false), StepEnd::kBeginAgain);
  EXPECT_EQ(EndOfUpload(true, 1, false), StepEnd::kNotDone);
  EXPECT_EQ(EndOfUpload(true, 9, true), StepEnd::kDone);
  EXPECT_EQ(EndOfUpload(false, 0, false), StepEnd::kNotDone);
}

TEST(UploadSteps, OfSeveralPartsTheUserChoosesWhatGoes) {
  Document document = NewDocument();
  ProjectConfig config;
  config.sdb_format = 1;
  EXPECT_FALSE(AsksWhatToSend(config, document)) << "there is one";
  document.ubis.resize(2);
  EXPECT_TRUE(AsksWhatToSend(config, document));
  document.sdbs.emplace_back();
  document.sdbs[1].name = "Other";
  EXPECT_EQ(PartsToSend(document).size(), 4u);
  EXPECT_EQ(PartsToSend(document)[1], "Other");
  const BinSelection selection = SelectionOf(document, {false, true, false, true}).value();
  EXPECT_EQ(std::pair(selection.sdbs, selection.ubis), std::pair(2u, 2u));
  EXPECT_FALSE(SelectionOf(document, {false, false, true, true})) << "no SDB";
  config.sdb_format = 0;
  EXPECT_FALSE(AsksWhatToSend(config, document));
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
