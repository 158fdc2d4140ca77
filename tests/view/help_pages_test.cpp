// Every dialog and window has its page of the help.
#include "view/help_pages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "tests/support/data_folder.h"
#include "tests/support/recorder.h"

namespace vexa {

namespace {

// The table of contents names the page: make_help.sh makes no help in which a page that it names is missing.
bool IsPage(std::string_view page) {
  std::ifstream contents(DataFolder().parent_path() / "help" / "index.md");
  std::stringstream text;
  text << contents.rdbuf();
  return text.str().find("](" + std::string(page) + ".md)") != std::string::npos;
}

TEST(HelpPages, EveryDialogHasAPageOfItsOwn) {
  std::ifstream header(DataFolder().parent_path() / "view" / "dialog_ids.h");
  std::set<int> numbers;
  std::string word, name;
  int number = 0;
  while (header >> word) {
    if (word != "#define" || !(header >> name >> number)) continue;
    EXPECT_TRUE(numbers.insert(number).second) << name << " has another dialog's number";
    EXPECT_NE(HelpPage(number), "index") << name;
    EXPECT_TRUE(IsPage(HelpPage(number))) << name << ": " << HelpPage(number);
  }
  EXPECT_GT(numbers.size(), 30u);
}

TEST(HelpPages, WindowsHaveTheirPagesAndTheRestTheContents) {
  for (const HelpWindow window :
       {HelpWindow::kFrame, HelpWindow::kEditor, HelpWindow::kConsole, HelpWindow::kMenus})
    EXPECT_TRUE(IsPage(HelpPage(window))) << HelpPage(window);
  EXPECT_EQ(HelpPage(HelpWindow::kContents), "index");
  EXPECT_EQ(HelpPage(1), "index");
}

TEST(HelpPages, ShownByWhatIsThere) {
  Recorder recorder;
  const Path folder = recorder.context.temporary_folder, book = folder / "help.chm",
             leaf = folder / "help" / "lnb.html";
  const auto targets = [&] {
    std::vector<Path> found;
    for (const HelpWay& way : HelpWays(folder, "lnb")) {
      EXPECT_EQ(way.html_help, way.target != leaf);
      found.push_back(way.target);
    }
    return found;
  };
  const auto failure = [&](bool has_html_help) {
    const std::string text = HelpFailureText(folder, HelpWays(folder, "lnb"), has_html_help);
    return text.substr(0, text.find('\n'));
  };
  EXPECT_THAT(targets(), testing::IsEmpty());
  EXPECT_EQ(failure(true), "The help file is missing:");
  PutFile(book, {});
  EXPECT_THAT(targets(), testing::ElementsAre(folder / "help.chm::/lnb.html"));
  EXPECT_EQ(failure(false), "HTML Help is not installed on this system.");
  EXPECT_EQ(failure(true), "The help file cannot be shown:");
  std::filesystem::create_directory(folder / "help");
  PutFile(leaf, {});
  EXPECT_THAT(targets(), testing::ElementsAre(folder / "help.chm::/lnb.html", leaf));
  EXPECT_EQ(failure(false), "The help file cannot be shown:");
  std::filesystem::remove(book);
  EXPECT_THAT(targets(), testing::ElementsAre(leaf));
}

}  // namespace

}  // namespace vexa
