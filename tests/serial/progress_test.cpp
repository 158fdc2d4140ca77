#include "serial/progress.h"

#include <gtest/gtest.h>

namespace vexa {
namespace {

TEST(Progress, RateAndTimeLeftAreThoseOfTheLastSeconds) {
  ProgressMeter meter;
  BeginPhase(meter, TransferPhase::kUpload, 10000, 100);
  struct Row {
    double seconds;
    uint64_t done, repeated;
    const char* line;
  };
  const Row rows[] = {{100.001, 500, 0, "progress: upload 500/10000 0 - 0"},  // too early to tell
                      {101, 1000, 0, "progress: upload 1000/10000 1000 9 0"},
                      {102, 1001, 1, "progress: upload 1001/10000 500 18 1"},
                      {109, 1001, 2, "progress: upload 1001/10000 0 - 2"},  // it stands still
                      {110, 4001, 2, "progress: upload 4001/10000 375 16 2"},
                      {111, 20000, 2, "progress: upload 10000/10000 999 0 2"}};
  for (const Row& row : rows) {
    Measure(meter, row.done, row.repeated, row.seconds);
    EXPECT_EQ(PlainProgress(meter.now), row.line);
  }
  BeginPhase(meter, TransferPhase::kVerify, 7, 112);
  EXPECT_EQ(PlainProgress(meter.now), "progress: verify 0/7 0 - 2") << "repeats are the run's";
  Measure(meter, 7, 2, 112.5);
  EXPECT_EQ(PlainProgress(meter.now), "progress: verify 7/7 14 0 2") << "shorter than a second";
  BeginPhase(meter, TransferPhase::kWakeUp, 0, 113);
  Measure(meter, 5, 2, 114);
  EXPECT_EQ(PlainProgress(meter.now), "progress: wake-up 0/0 0 - 2");
}

TEST(Progress, TheLineIsAsWideAsItsPlace) {
  const TransferProgress half{TransferPhase::kUpload, 50, 100, 11520, 65, 3};
  const std::pair<TransferProgress, std::string> rows[] = {
      {half, "Uploading [#######-------]  50%  11.5 kB/s  1:05 left  3 repeated"},
      {half, "Uploading [##---]  50%  11.5 kB/s  1:05 left  3 repeated"},
      {half, "Uploading  50%  11.5 kB/s  1:05 left  3 repeated"},
      {half, "Uploading  50%  11.5 kB/s"},
      {half, "Uploading  50%  11.5 kB/s    "},  // no part of a word
      {{TransferPhase::kVerify, 100, 100, 999, 0, 0},
       "Verifying [#####################] 100%  999 B/s  0:00 left"},
      {{TransferPhase::kDownload, 0, 100, 0, std::nullopt, 0}, "Downloading [--------]   0%  0 B/s"},
      {{TransferPhase::kDownload, 0, 100, 1000, std::nullopt, 0}, "Downloading   0%  1.0 kB/s"},
      {{TransferPhase::kDownload, 0, 100, 100000, std::nullopt, 0}, "Downloading   0%  100.0 kB/s"},
      {{}, "Waiting for the receiver          "},
      {half, ""}};
  for (const auto& [progress, line] : rows) EXPECT_EQ(ProgressLine(progress, line.size()), line);
}

}  // namespace
}  // namespace vexa
