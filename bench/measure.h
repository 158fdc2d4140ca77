// What every yardstick needs: the best time of several runs, a failure that ends the program, the largest
// database that a file can hold, and the row that it leaves in the table.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "core/bin_file.h"
#include "core/messages.h"
#include "tests/support/random_database.h"
#include "tests/support/test_folder.h"

namespace vexa {

inline void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "%s failed\n", what.c_str());
  std::exit(1);
}

struct Measured {
  double value = 0;
  const char* unit = "ms";
};

struct BenchRow {
  std::string what;
  Measured figure;
  std::string beside = {};  // what a user would have instead; empty: nothing of the kind
  Measured base = {};       // its figure, in the unit of `figure`
  const char* meant = "-";  // the limit for the ratio, or for the figure where there is nothing beside it
};

inline std::string TextOf(const Measured& measured) {
  const std::string unit = measured.unit;
  const int decimals = unit == "bytes" ? 0 : unit == "s" ? 3 : 2;
  return Format("%.*f %s", decimals, measured.value, measured.unit);
}

// Prints a row of a Markdown table: what | figure | beside | ratio | meant. bench/run.sh prints its head.
inline void PrintRow(const BenchRow& row) {
  const bool alone = row.beside.empty();
  const std::string beside = alone ? "-" : row.beside + ": " + TextOf(row.base);
  const std::string ratio = alone ? "-" : Format("%.2f x", row.figure.value / row.base.value);
  std::printf("| %s | %s | %s | %s | %s |\n", row.what.c_str(), TextOf(row.figure).c_str(), beside.c_str(),
              ratio.c_str(), row.meant);
  std::fflush(stdout);
}

// Milliseconds of the fastest of `runs`; `prepare` comes before each run and is not counted.
inline double BestMilliseconds(
    int runs, const std::function<void()>& work, const std::function<void()>& prepare = [] {}) {
  double best = 1e9;
  for (int i = 0; i < runs; ++i) {
    prepare();
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
    best = std::min(best, spent.count());
  }
  return best;
}

// One run of a command of the system's, as a user would have it.
inline void RunCommand(const std::string& command) {
  Require(std::system(command.c_str()) == 0, command);
}

// A database of 65,535 services, saved as `path`; with all the satellites and carriers that it can have
// unless there shall be less.
inline void SaveLargestDatabase(const Context& context, const Path& path,
                                size_t satellites = kMaximumSatellites, size_t carriers = kMaximumCarriers) {
  std::mt19937 random(1);
  RandomShape shape;
  shape.lnbs = 16;
  shape.satellites = satellites;
  shape.carriers = carriers;
  shape.services = kMaximumServices;
  shape.favourites = 1000;
  Document document = NewDocument();
  document.sdbs[0].database = MakeRandomDatabase(random, shape);
  Require(SaveBin(context, document, path).has_value(), "making the largest database");
}

}  // namespace vexa
