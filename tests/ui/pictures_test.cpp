// The pictures that the program holds: sharp at 100, 125, 150, 200 and 300 %, its icon up to 256 dots.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/ui/driver.h"
#include "ui/controls/resource.h"

namespace vexa {

namespace {

TEST(Pictures, StandInEverySize) {
  HMODULE program = LoadLibraryExW(EditorProgram().c_str(), nullptr,
                                   LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
  ASSERT_TRUE(program);
  for (const int strip : {IDB_TOOLBAR, IDB_TREE}) {
    int place = strip;
    LONG pictures = 0;
    for (const LONG side : {16, 20, 24, 32, 48}) {
      HANDLE bitmap = LoadImageW(program, MAKEINTRESOURCEW(place++), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION);
      BITMAP facts{};
      ASSERT_TRUE(bitmap && GetObjectW(bitmap, sizeof facts, &facts)) << place;
      EXPECT_EQ(facts.bmHeight, side);
      if (pictures == 0) pictures = facts.bmWidth / side;
      EXPECT_EQ(facts.bmWidth, pictures * side);
      DeleteObject(bitmap);
    }
    EXPECT_GT(pictures, 1);
  }
  // A group: three words, the last of them the count, then 14 bytes an icon, which begin with width and
  // height; 0 is 256.
  HRSRC group = FindResourceW(program, MAKEINTRESOURCEW(IDI_VEXA), RT_GROUP_ICON);
  ASSERT_TRUE(group);
  const auto* bytes = static_cast<const BYTE*>(LockResource(LoadResource(program, group)));
  std::vector<int> sides;
  for (int i = 0; i < bytes[4]; ++i) {
    sides.push_back(bytes[6 + 14 * i]);
    EXPECT_EQ(bytes[7 + 14 * i], sides.back());
  }
  EXPECT_THAT(sides, testing::ElementsAre(16, 20, 24, 32, 40, 48, 64, 128, 0));
  FreeLibrary(program);
}

}  // namespace

}  // namespace vexa
