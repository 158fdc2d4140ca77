// The transfer jobs and the protocol of the line between the editor and the receiver's loader.
//
// Frames and control bytes: image/line_frame.h.
// Before the first wake-up, or the first ETB of a console upload, a job waits until the line is quiet: late
// frames of an earlier download hold XON, ACK and ENQ as data. What arrives before an ETB was sent is no
// answer either. A console upload has no wake-up that ends such a download, and the receiver repeats its
// frame after seconds of silence: until the first packet goes out, ACK and ENQ that stand among other bytes
// than answers and text are data, and a whole frame is answered by CAN, so that the receiver listens to ETB.
//
// Upload:   wake-up message until XON, three SYN; then for each URT file: ETB until ACK, wait for ENQ, one
//           frame for each ENQ, the last frame again and again after a NAK. A console upload starts at the
//           ETB.
// Download: the wake-up message of its own, the request script as an upload, ETB from the receiver; then for
//           each region: ACK, and an ENQ (next) or NAK (again) for each frame; CAN after the last region.
// Region frames: image/region_frame.h.
//
// Threads: the port's reader calls TransferReceive or DownloadReceive; a job runs on a thread of its own; the
// face sets `cancel` through CancelTransfer (serial/session.h). They share the atomics of `Transfer` and
// nothing else; whoever changes one calls Wake. View, report and messages are called from the jobs' threads.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "core/context.h"

namespace vexa {

inline constexpr std::array<uint8_t, 6> kUploadWakeUp = {0x02, 0x44, 0x46, 0x55, 0x20, 0x0A};
inline constexpr std::array<uint8_t, 6> kDownloadWakeUp = {0x02, 0x44, 0x55, 0x4D, 0x50, 0x0A};
inline constexpr uint32_t kMaximumFrame = 8192;  // payload bytes that a download takes

// What the dialog or the console shows of a transfer. Any may be empty.
struct TransferView {
  std::function<void(const std::string&text)> title, status, result, button;
  std::function<void(uint64_t total)> range;
  std::function<void(uint64_t position)> position;
  std::function<void(uint32_t)> console_total, console_count;
  std::function<void()> reset_console;
  std::function<void()> press_cancel;  // posts; must not wait for the job
};

struct TransferLine {
  // The number of bytes that the line took; fewer than all: the port gave up.
  std::function<size_t(std::span<const uint8_t> bytes)> write;
  std::function<void()> purge;  // forgets what was received and not yet handed out
};

// The download's packet under way; touched by the reader's thread only.
struct IncomingPacket {
  std::vector<uint8_t> bytes;  // of its frame, as far as they came
  std::FILE* file = nullptr;   // "pckurt.bin": payload and checksum
};

// What arrives while answers are weighed; touched by the reader's thread only. Times in ms of the steady
// clock.
struct AnswerBurst {
  static constexpr int64_t never = -1'000'000;
  int64_t data_at = never;                                 // the last chunk of data
  int64_t ack_at = never, enq_at = never, nak_at = never;  // when the flags were set
  std::vector<uint8_t> bytes;  // of the data without a pause, as many as a frame may have
};

struct Transfer {
  Context context;
  TransferLine line;
  TransferView view;
  std::function<void(int code)> report;         // see serial/reports.h; may be empty
  std::vector<Path> files;                      // to send, in order
  std::vector<Path> region_files;               // where region 1, 2, ... of a download go
  std::function<bool(bool crc_failed)> decode;  // the downloaded regions into a database; true on success
  std::string port_name;                        // for messages; may be empty
  std::string subject;                          // what is sent, for the status line; may be empty
  std::function<int()> seconds_of_hour;         // minute x 60 + second of local time; empty: the clock
  std::function<Outcome(std::thread&, std::function<void()>)> start_thread;  // empty: the system's

  std::atomic<bool> deaf{false};          // what arrives is from before the job, and is only counted
  std::atomic<uint64_t> chunks_heard{0};  // received
  std::atomic<int64_t> heard_at{0};       // ms of the steady clock: the last chunk, or the start
  // The port may go: the last packet was handed to the line, or all regions are here.
  std::atomic<bool> line_done{false};
  std::atomic<bool> polled{false};      // an ETB was sent
  std::atomic<bool> weighed{false};     // answers are told from the data of late frames
  std::atomic<bool> late_frame{false};  // one arrived whole: the receiver is still in a download
  std::atomic<bool> xon{false}, ack{false}, enq{false}, nak{false}, cancel{false};
  std::atomic<bool> console_active{false}, download_started{false}, in_packet{false}, script_done{false};
  std::atomic<int64_t> counter{0}, expected{0};
  std::atomic<uint32_t> packet_count{0}, file_index{0}, region_index{0}, regions{0};
  std::atomic<uint64_t> packets_moved{0};     // new ones, sent or received: progress for a time-out
  std::atomic<uint64_t> packets_repeated{0};  // sent again, or asked for again
  std::atomic<uint64_t> bytes_moved{0};       // payload of the new ones
  std::atomic<uint64_t> region_bytes{0};      // data of a download's regions
  double bytes_per_second = 0;  // of the line, so that repeats keep its pace; 0: as fast as they are taken
  std::atomic<bool> crc_failed{false}, decoded{false}, refused{false};  // refused: a file could not be used
  std::atomic<int> receive_outcome{0};                                  // what DownloadReceiveThread returned
  std::atomic<bool> receive_ended{false};

  std::mutex text_lock;  // guards the members below; see StatusOf and FailureOf
  std::string status, failure;

  std::mutex lock;
  std::condition_variable changed;
  std::thread receive_thread;

  std::mutex region_lock;  // guards the members below
  std::FILE* region_file = nullptr;
  bool region_cut = false;       // something did not get into the file
  Path region_refused;           // the file that did not take it
  std::error_code region_error;  // the system's then
  uint32_t region_length = 0, region_crc = 0;
  IncomingPacket packet;
  AnswerBurst burst;

  Transfer() = default;
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;
  ~Transfer();  // the threads must have ended
};

// All flags, the counters and the indices as at the start of a job.
void ResetTransfer(Transfer& transfer);
// Lets those who wait for an atomic of the transfer look again; any thread.
void Wake(Transfer& transfer);
// The job's last status text, and why it failed; empty: it did not, or not by itself.
std::string StatusOf(Transfer& transfer);
std::string FailureOf(Transfer& transfer);
// Since something arrived, or since the start when nothing did.
double SecondsUnanswered(const Transfer& transfer);

// Receive callbacks. A byte that follows the first ACK in the same chunk is not looked at for ENQ and NAK.
void TransferReceive(Transfer& transfer, std::span<const uint8_t> bytes);
// The same while the script goes out; then the frames of the regions.
void DownloadReceive(Transfer& transfer, std::span<const uint8_t> bytes);

// The jobs. 1: ran to its end; 0: cancelled, or its file could not be opened (message shown).
int UploadAdbThread(Transfer& transfer);
int UploadSdbThread(Transfer& transfer);
int UploadUrtPacketThread(Transfer& transfer);  // the console's
// Starts DownloadReceiveThread on `receive_thread` when the script is sent.
int UploadDownloadScriptThread(Transfer& transfer);
int DownloadReceiveThread(Transfer& transfer);

// --- shared by the jobs' files ---

// Sleeps for the whole time; false when cancelled meanwhile.
bool PauseTransfer(Transfer& transfer, int milliseconds);
// Waits until `ready` or cancel, at most `milliseconds`; whether `ready`.
bool AwaitTransfer(Transfer& transfer, int milliseconds, const std::function<bool()>& ready);
// For the receive callbacks: counts a chunk. False when it is not to be looked at.
bool TakesBytes(Transfer& transfer);
// How long no data arrives before and behind an answer, in ms: 30, and more on lines of below 133 bytes a
// second.
int BurstPause(const Transfer& transfer);
// Sets the flags of the control bytes in a chunk, for the upload's callback and the script's.
void ScanHandshakes(Transfer& transfer, std::span<const uint8_t> bytes);
// False when the port did not take it.
bool SendByte(Transfer& transfer, uint8_t byte);
// Remembers the text as the job's status, and shows it.
void ShowStatus(Transfer& transfer, const std::string& text);
// Remembers why the job ends, and tells it.
void TellFailure(Transfer& transfer, const std::string& text, const std::string& detail);
// Calls a part of the view that may be empty.
inline void Show(const std::function<void(const std::string&)>& view, const std::string& text) {
  if (view) view(text);
}
// Asks the face to cancel, as its button does; returns at once.
void PressCancel(Transfer& transfer);

}  // namespace vexa
