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
  context.messages.tell = [this](Icon icon, const std::string& text, const std::string& title) {
    shown.push_back({icon, text, title});
  };
  context.messages.ask = [this](const std::string& text, const std::string& title, bool) {
    shown.push_back({Icon::kQuestion, text, title});
    return answer;
  };
  const FileOperations& system = SystemFiles();
  files.create = [this, &system](const Path& path) { return FailsNow() ? nullptr : system.create(path); };
  files.write = [this, &system](std::FILE* file, std::span<const uint8_t> bytes) {
    // A failing write leaves half of its bytes behind, as a full disk does.
    if (!FailsNow()) return system.write(file, bytes);
    system.write(file, bytes.first(bytes.size() / 2));
    return false;
  };
  files.finish = [this, &system](std::FILE* file) {
    const bool fails = FailsNow();
    return system.finish(file) && !fails;
  };
  files.replace = [this, &system](const Path& from, const Path& to) {
    return !FailsNow() && system.replace(from, to);
  };
  context.files = &files;
}

Recorder::~Recorder() {
  RemoveFolder(context.temporary_folder);
}

std::vector<std::string> Recorder::Texts() {
  std::vector<std::string> texts;
  for (const ShownMessage& message : shown) texts.push_back(message.text);
  shown.clear();
  return texts;
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
  std::FILE* file = SystemFiles().create(path);
  ASSERT_NE(file, nullptr) << Utf8FromPath(path);
  const bool written = SystemFiles().write(file, content);
  ASSERT_TRUE(std::fclose(file) == 0 && written) << Utf8FromPath(path);
}

}  // namespace vexa
