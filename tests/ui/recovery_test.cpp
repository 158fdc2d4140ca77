// Work that is not saved, when the program is killed or fails.
#include <gmock/gmock.h>

#include "tests/ui/editor_fixture.h"
#include "ui/controls/application.h"
#include "ui/frame/test_mode.h"
#include "view/command_table.h"

namespace vexa {
namespace {

using testing::HasSubstr;

class RecoveryWindow : public EditorTest {
 protected:
  RecoveryWindow() { SetEnvironmentVariableW(L"VEXA_RECOVERY", root().c_str()); }
  ~RecoveryWindow() override { SetEnvironmentVariableW(L"VEXA_RECOVERY", nullptr); }
  Path root() const { return recorder_.context.temporary_folder / "recovery"; }
  // Files of this ending below the folder of kept work.
  size_t Count(const char* extension) const {
    size_t count = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root(), error))
      count += entry.path().extension() == extension;
    return count;
  }
  void StartAndChange() {
    Start({L"--test-mode"}, PutSample());
    ASSERT_TRUE(SelectLow());
    driver_->Command(kCmdAdd);
    EXPECT_EQ(driver_->ListCount(), 4);
  }
  void ExpectOffered(int answer) {
    Start();
    EXPECT_THAT(driver_->Answer(answer), HasSubstr("ended before this work was saved"));
    EXPECT_THAT(driver_->detail(), HasSubstr("sample.bin, 20"));
  }
  void ExpectNothingOffered() {
    Start();
    EXPECT_TRUE(driver_->HasCaughtUp());
    EXPECT_EQ(driver_->FindBox(), nullptr);
    ExpectCleanEnd(*driver_);
  }
};

TEST_F(RecoveryWindow, AKilledProgramsWorkIsOpenedAtTheNextStart) {
  StartAndChange();
  ASSERT_TRUE(driver_->Until(
      "the kept file", [&] { return Count(".recovery") == 1; }, 30));
  driver_->Kill();
  ExpectOffered(IDCANCEL);
  ExpectCleanEnd(*driver_);
  ExpectOffered(IDYES);
  ASSERT_TRUE(driver_->Until("the database window", [&] { return driver_->Children().size() == 1; }));
  EXPECT_THAT(driver_->Title(driver_->ActiveChild()), testing::EndsWith("sample.bin *"));
  ASSERT_TRUE(SelectLow());
  EXPECT_EQ(driver_->ListCount(), 4);
  driver_->Command(kCmdSave);
  EXPECT_EQ(Count(".recovery"), 0u);
  ExpectCleanEnd(*driver_);
  ExpectNothingOffered();
}

TEST_F(RecoveryWindow, AFailureLeavesAReportAndTheWork) {
  StartAndChange();
  PostMessageW(driver_->frame(), RegisterWindowMessageW(kTestMessage), kFail, 0);
  EXPECT_THAT(driver_->Answer(IDOK), HasSubstr("has failed"));
  EXPECT_TRUE(driver_->ExitCode());
  EXPECT_EQ(Count(".txt"), 1u);
  ExpectOffered(IDNO);
  EXPECT_TRUE(driver_->Until("no kept file", [&] { return Count(".recovery") == 0; }));
  EXPECT_TRUE(driver_->Children().empty());
  ExpectCleanEnd(*driver_);
  ExpectNothingOffered();
}

TEST_F(RecoveryWindow, AnEndThatTheUserDidNotAskForKeepsTheWork) {
  StartAndChange();
  PostMessageW(driver_->frame(), WM_QUIT, 0, 0);
  EXPECT_TRUE(driver_->ExitCode());
  EXPECT_EQ(Count(".recovery"), 1u);
  ExpectOffered(IDCANCEL);
  ExpectCleanEnd(*driver_);
}

TEST_F(RecoveryWindow, AFileThatIsOpenedAtTheStartHasTheWindowOfItsWork) {
  StartAndChange();
  ASSERT_TRUE(driver_->Until(
      "the kept file", [&] { return Count(".recovery") == 1; }, 30));
  driver_->Kill();
  Start({L"--test-mode", (recorder_.context.temporary_folder / "sample.bin").native()});
  EXPECT_THAT(driver_->Answer(IDYES), HasSubstr("ended before this work was saved"));
  ASSERT_TRUE(driver_->Until("the database window", [&] { return !driver_->Children().empty(); }));
  EXPECT_TRUE(driver_->HasCaughtUp());
  EXPECT_EQ(driver_->Children().size(), 1u);
  EXPECT_THAT(driver_->Title(driver_->ActiveChild()), testing::EndsWith("sample.bin *"));
  driver_->Command(kCmdSave);
  ExpectCleanEnd(*driver_);
}

TEST_F(RecoveryWindow, TheEndOfTheSessionKeepsWhatTheUserWasNotAskedAbout) {
  for (const bool asked : {true, false}) {
    StartAndChange();
    if (asked) {
      PostMessageW(driver_->frame(), WM_QUERYENDSESSION, 0, 0);
      EXPECT_THAT(driver_->Answer(IDNO), HasSubstr("Do you want to save"));
    }
    PostMessageW(driver_->frame(), WM_ENDSESSION, TRUE, 0);
    EXPECT_TRUE(driver_->ExitCode());
    EXPECT_EQ(Count(".recovery"), asked ? 0u : 1u);
  }
  ExpectOffered(IDNO);
  ExpectCleanEnd(*driver_);
}

TEST_F(RecoveryWindow, ThatWorkCannotBeKeptIsToldOnce) {
  Start({L"--test-mode"}, PutSample());
  const auto number = reinterpret_cast<UINT_PTR>(driver_->ActiveChild());
  const Path file = root() / "work-1" / (std::to_string(number) + ".recovery");
  ASSERT_TRUE(std::filesystem::create_directory(file));
  ASSERT_TRUE(SelectLow());
  driver_->Command(kCmdAdd);
  const auto keep = [&] { PostMessageW(driver_->frame(), kTransferEnded, 0, 0); };
  keep();
  EXPECT_THAT(driver_->Answer(IDOK), HasSubstr("Unsaved work cannot be kept"));
  EXPECT_THAT(driver_->detail(), HasSubstr("work-1"));
  keep();
  EXPECT_TRUE(driver_->HasCaughtUp());
  EXPECT_EQ(driver_->FindBox(), nullptr);
  std::filesystem::remove(file);
  keep();
  EXPECT_TRUE(driver_->HasCaughtUp());
  EXPECT_TRUE(std::filesystem::is_regular_file(file));
  driver_->Kill();
}

TEST_F(RecoveryWindow, TheOriginalComesBackAndGoesAgain) {
  StartAndChange();
  driver_->Command(kCmdSave);
  driver_->Command(kCmdRevert);
  EXPECT_EQ(driver_->ListCount(), 3);
  driver_->Command(kCmdUndo);
  EXPECT_EQ(driver_->ListCount(), 4);
  ExpectCleanEnd(*driver_);
}

}  // namespace
}  // namespace vexa
