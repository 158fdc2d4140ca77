// What every yardstick needs: the best time of several runs, a failure that ends the program, and the largest
// database that a file can hold.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "core/bin_file.h"
#include "tests/support/random_database.h"
#include "tests/support/test_folder.h"

namespace vexa {

inline void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "%s failed\n", what.c_str());
  std::exit(1);
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

// A database of 85 satellites with 65,535 carriers and services, saved as `path`.
inline void SaveLargestDatabase(const Context& context, const Path& path) {
  std::mt19937 random(1);
  RandomShape shape;
  shape.lnbs = 16;
  shape.satellites = 85;
  shape.carriers = kMaximumCarriers;
  shape.services = kMaximumServices;
  shape.favourites = 1000;
  Document document = NewDocument();
  document.sdbs[0].database = MakeRandomDatabase(random, shape);
  Require(SaveBin(context, document, path).has_value(), "making the largest database");
}

}  // namespace vexa
