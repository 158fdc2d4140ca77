// trace show: the record as text and as a page, and files that are none.
#include "tests/cli/cli_test.h"

namespace vexa {
namespace {

using testing::HasSubstr;

TEST_F(CliTest, ARecordOfTheLineIsExplained) {
  Put("line.txt", "    0.100 STB> 11                                               XON\n");
  EXPECT_THAT(Vexa("trace show @line.txt").output, HasSubstr("    0.100  receiver  XON: is awake\n"));
  EXPECT_THAT(Vexa("trace show @line.txt --format html").output, testing::StartsWith("<!DOCTYPE html>"));
  Put("other.txt", "    0.100 STB> 11 \nno\n");
  const ProgramResult other = Vexa("trace show @other.txt");
  EXPECT_EQ(other.status, 1);
  EXPECT_EQ(other.output, "");
  EXPECT_THAT(other.errors, HasSubstr("other.txt, line 2."));
  EXPECT_EQ(Vexa("trace show @none.txt").status, 1);
  EXPECT_EQ(Vexa("trace show @line.txt --format pdf").status, 2);
}

}  // namespace
}  // namespace vexa
