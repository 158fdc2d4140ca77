// Short transfers over a line that goes wrong, and how they end. Many run at a time, as they mostly wait.
#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "serial/session.h"
#include "tests/serial/end_transfer.h"
#include "tests/serial/receiver_rig.h"
#include "tests/serial/shared_messages.h"
#include "tests/serial/upload_frames.h"
#include "tests/support/recorder.h"

namespace vexa {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)  // GCC's way to say so, and Clang's
#define VEXA_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VEXA_SANITIZED
#endif
#endif

#if defined(_WIN32) || defined(VEXA_SANITIZED)
inline constexpr bool kSlowBuild = true;
#else
inline constexpr bool kSlowBuild = false;
#endif

// kUnconfirmed: an upload whose last packet the receiver refused, for which the editor does not wait.
enum class End { kRight, kTold, kStalled, kUnconfirmed, kWrong };

struct FaultyRig {
  Recorder recorder;
  SharedMessages messages;
  std::atomic<bool> pressed{false};
  TransferSession session;
  double patience = 8;  // s without a new packet, after which it is cancelled, as a user's time-out does it

  explicit FaultyRig(const CommApi& api) {
    session.port.api = &api;
    session.port.messages = messages.messages();
    session.transfer.context = recorder.context;
    session.transfer.context.messages = messages.messages();
    session.transfer.view.press_cancel = [this] { pressed = true; };
  }
  // Whether the job ended by itself.
  bool Run(TransferJob job, const Bytes& file) {
    using Clock = std::chrono::steady_clock;
    const Path path = recorder.context.temporary_folder / "short.urt";
    PutFile(path, file);
    session.transfer.files = {path};
    if (!StartTransfer(session, ProjectConfig{}, job)) return false;
    uint64_t moved = 0;
    for (auto last = Clock::now(); !pressed && !IsTransferOver(session);) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      if (session.transfer.packets_moved != moved) last = Clock::now();
      moved = session.transfer.packets_moved;
      if (std::chrono::duration<double>(Clock::now() - last).count() > patience)
        return EndTransfer(session), false;
    }
    return EndTransfer(session);
  }
};

inline End Upload(FaultyRig& rig, ReceiverRig& receiver, const Bytes& image) {
  if (!rig.Run(TransferJob::kAdb, UploadFile(image))) return End::kStalled;
  if (rig.session.outcome != 1) return rig.messages.Texts().empty() ? End::kWrong : End::kTold;
  // The last packet needs no answer, so the receiver may still be at it.
  for (int i = 0; i < 200 && receiver.Memory().spaces[1].empty(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  const LoaderMemory memory = receiver.Memory();
  if (memory.spaces[1].empty()) return End::kUnconfirmed;
  return memory.spaces[1].begin()->second == image ? End::kRight : End::kWrong;
}

inline End Download(FaultyRig& rig, const std::vector<Bytes>& expected) {
  Transfer& transfer = rig.session.transfer;
  bool crc_failed = false;
  std::vector<Bytes> got;
  for (size_t i = 0; i < expected.size(); ++i)
    transfer.region_files.push_back(rig.recorder.context.temporary_folder / ("r" + std::to_string(i)));
  transfer.decode = [&](bool failed) {
    crc_failed = failed;
    for (const Path& file : transfer.region_files) got.push_back(ReadWholeFile(file).value_or(Bytes{}));
    return true;
  };
  if (!rig.Run(TransferJob::kDownload, RequestFile(expected))) return End::kStalled;
  if (crc_failed) return End::kTold;
  if (got.empty()) return rig.messages.Texts().empty() ? End::kWrong : End::kTold;
  return got == expected ? End::kRight : End::kWrong;
}

// Calls `run` with 1, 2, ... until it gives false, `at_a_time` of them at once.
inline void RunMany(int at_a_time, const std::function<bool(int)>& run) {
  std::atomic<int> next{0};
  std::vector<std::thread> workers;
  for (int i = 0; i < at_a_time; ++i)
    workers.emplace_back([&] {
      while (run(++next)) {
      }
    });
  for (std::thread& worker : workers) worker.join();
}

}  // namespace vexa
