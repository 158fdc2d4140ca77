// What tests hand to the engine: recorded messages, a folder of their own, files whose n-th step fails.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/context.h"

namespace vexa {

// Everything the engine told or asked, in order. Questions are answered with `answer`.
struct Recorder {
  Recorder();
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  std::vector<Message> shown;
  bool answer = true;
  Context context;  // its temporary folder is new, and removed at the end
  FileOperations files;

  // The texts alone, and what stands below them; cleared by the call.
  std::vector<std::string> Texts();
  std::vector<std::string> Details();
  // Whether anything was told, and every message says below its text what it is about and what to do.
  bool EachHasDetail() const;
  // The detail of a message about a step that failed on this file.
  static std::string FullDisk(const Path& path);
  // From now on the n-th step (from 1) of all file writing fails, then all goes on; 0: none.
  // A step is one create, write, finish or replace; the reason is a full disk. `steps` counts them.
  void FailStep(int n);
  int steps = 0;

 private:
  int failing_ = 0;
  bool FailsNow();
};

Bytes BytesOf(const std::string& text);
// Writes a file for a test to read; aborts the test when it cannot.
void PutFile(const Path& path, std::span<const uint8_t> content);

}  // namespace vexa
