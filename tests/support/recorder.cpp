#include "tests/support/recorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>

#include "tests/support/test_folder.h"

namespace vexa {

Recorder::Recorder() {
  static std::atomic<int> number{0};
  static const unsigned run = std::random_device{}();
  const auto folder = MakeTestFolder("vexa-test-" + std::to_string(run) + "-" + std::to_string(number++));
  EXPECT_TRUE(folder.has_value());
  if (folder) context.temporary_folder = *folder;
  context.messages.tell = [this](const Message& message) { shown.push_back(message); };
  context.messages.ask = [this](const std::string& text, const std::string& title, bool) {
    shown.push_back({Icon::kQuestion, text, title, ""});
    return answer;
  };
  const FileOperations& system = SystemFiles();
  const auto full = std::make_error_code(std::errc::no_space_on_device);
  files.create = [=, this, &system](const Path& path) {
    return FailsNow() ? Made<std::FILE*>(full) : system.create(path);
  };
  files.write = [=, this, &system](std::FILE* file, std::span<const uint8_t> bytes) -> Outcome {
    // A failing write leaves half of its bytes behind, as a full disk does.
    if (!FailsNow()) return system.write(file, bytes);
    system.write(file, bytes.first(bytes.size() / 2));
    return full;
  };
  files.finish = [=, this, &system](std::FILE* file) {
    const bool fails = FailsNow();
    const Outcome finished = system.finish(file);
    return fails ? Outcome(full) : finished;
  };
  files.replace = [=, this, &system](const Path& from, const Path& to) {
    return FailsNow() ? Outcome(full) : system.replace(from, to);
  };
  files.list = system.list;
  context.files = &files;
}

Recorder::~Recorder() {
  RemoveFolder(context.temporary_folder);
}

std::vector<std::string> Recorder::Texts() {
  std::vector<std::string> texts;
  for (const Message& message : shown) texts.push_back(message.text);
  shown.clear();
  return texts;
}

std::vector<std::string> Recorder::Details() {
  std::vector<std::string> details;
  for (const Message& message : shown) details.push_back(message.detail);
  shown.clear();
  return details;
}

bool Recorder::EachHasDetail() const {
  for (const Message& message : shown) {
    if (message.detail.empty()) return false;
  }
  return !shown.empty();
}

std::string Recorder::FullDisk(const Path& path) {
  return WriteReason(path, std::make_error_code(std::errc::no_space_on_device));
}

void Recorder::FailStep(int n) {
  failing_ = n;
  steps = 0;
}

bool Recorder::FailsNow() {
  return ++steps == failing_;
}

Bytes BytesOf(const std::string& text) {
  return {text.begin(), text.end()};
}

void PutFile(const Path& path, std::span<const uint8_t> content) {
  // Without the flushes to the disk that writing whole files, or emptying an old one, costs: tests write
  // thousands.
  std::error_code error;
  std::filesystem::remove(path, error);
  std::FILE* file = SystemFiles().create(path).value;
  ASSERT_NE(file, nullptr) << Utf8FromPath(path);
  const bool written = SystemFiles().write(file, content).done;
  ASSERT_TRUE(std::fclose(file) == 0 && written) << Utf8FromPath(path);
}

}  // namespace vexa
