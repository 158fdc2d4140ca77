// What a transfer's session says of itself.
#include "core/field_texts.h"
#include "serial/session.h"
#include "serial/verdict.h"

namespace vexa {

namespace {

constexpr const char* kGap = "   ";
constexpr double kSilence = 2;  // s without an answer before the line says so

bool IsDone(const TransferSession& session) {
  const Transfer& transfer = session.transfer;
  if (session.kind != TransferJob::kDownload) return session.outcome == 1;
  return transfer.receive_outcome == 1 && transfer.decoded;
}

// The status line has room for one line of a text.
std::string FirstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

// Why it failed; empty: it was cancelled.
std::string WhyFailed(TransferSession& session) {
  if (IsPortMissed(session)) return session.port_name + " is not available any more.";
  const std::string failure = FailureOf(session.transfer);
  if (!failure.empty()) return FirstLine(failure);
  if (session.transfer.crc_failed) return kCrcFailed;
  if (session.transfer.receive_outcome == 1) return "The received data could not be opened.";
  return "";
}

std::string Doing(TransferSession& session) {
  return session.said ? session.said : StatusOf(session.transfer);
}

std::string PacketsText(uint64_t count, const char* what) {
  return std::to_string(count) + (count == 1 ? " packet" : " packets") + what;
}

}  // namespace

std::string TransferStatusLine(TransferSession& session) {
  std::string line = Doing(session);
  if (!session.transfer.subject.empty()) line += kGap + session.transfer.subject;
  const double silent = SecondsUnanswered(session.transfer);
  if (silent < kSilence || IsTransferOver(session) || session.transfer.line_done) return line;
  const auto seconds = static_cast<unsigned long long>(silent);
  return line + kGap + Format("no answer for %llu:%02llu", seconds / 60, seconds % 60);
}

std::string UploadSubject(const Document& document, const BinSelection& selection, TransferJob job) {
  std::string names;
  const auto add = [&](const std::string& name) {
    names += (names.empty() ? "\"" : ", \"") + NameText(document, name) + "\"";
  };
  for (size_t i = 0; i < document.sdbs.size(); ++i) {
    if (i < 32 && (selection.sdbs >> i & 1) != 0) add(document.sdbs[i].name);
  }
  for (size_t i = 0; i < document.ubis.size(); ++i) {
    if (i < 32 && (selection.ubis >> i & 1) != 0) add(document.ubis[i].name);
  }
  return names + (job == TransferJob::kAdb ? " as ADB data" : " as SDB data");
}

std::string TransferOutcomeText(TransferSession& session) {
  const Transfer& transfer = session.transfer;
  std::string text = Doing(session);
  if (!IsDone(session)) {
    const std::string why = WhyFailed(session);
    text = why.empty() ? "Cancelled: " + text : "Failed: " + why;
  }
  text += kGap + PacketsText(transfer.packets_moved, "");
  if (transfer.packets_repeated > 0) text += kGap + PacketsText(transfer.packets_repeated, " repeated");
  return text + kGap + Format("%.1f s", session.seconds);
}

}  // namespace vexa
