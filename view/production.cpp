#include "view/production.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <new>
#include <sstream>
#include <thread>
#include <utility>

#include "core/bin_file.h"
#include "core/out_of_memory.h"
#include "image/sha256.h"
#include "platform/file_identity.h"
#include "platform/temporary_folder.h"
#include "platform/text.h"
#include "serial/batch.h"

namespace vexa {

namespace {

constexpr double kPatience = 20;  // s without a new packet, once a receiver has answered

}  // namespace

// What the window and a place's thread share.
struct PlaceShared {
  std::mutex lock;  // guards all but `stop`
  PlaceView view;
  bool ended = false;  // since TakeEnded
  std::atomic<bool> stop{false};
};

struct Workplace {
  std::shared_ptr<PlaceShared> shared = std::make_shared<PlaceShared>();
  std::unique_ptr<TemporaryFolder> folder;
  std::thread thread;

  ~Workplace() {
    shared->stop = true;
    if (thread.joinable()) thread.join();
  }
};

namespace {

// What a thread is given.
struct Task {
  std::shared_ptr<PlaceShared> shared;
  std::shared_ptr<const ReceiverBatch> batch;
  ProjectConfig config;
  Context context;
  const CommApi* api = nullptr;
  std::string serial;
};

std::string Sentence(const Message& message) {
  const std::string text = WithReason(message.text.substr(0, message.text.find('\n')), message.detail);
  return text.ends_with('.') ? text : text + ".";
}

// No box: what is told stands in the row. The first failure, and what state the receiver is in.
Messages Collect(const std::shared_ptr<PlaceShared>& shared) {
  Messages messages;
  messages.tell = [shared, failed = std::make_shared<bool>(false)](const Message& message) {
    const std::lock_guard hold(shared->lock);
    if (message.icon == Icon::kStop && std::exchange(*failed, true)) return;
    std::string& reason = shared->view.reason;
    reason += (reason.empty() ? "" : " ") + Sentence(message);
  };
  messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  return messages;
}

void End(PlaceShared& shared, PlaceState state, double seconds) {
  const std::lock_guard hold(shared.lock);
  PlaceView& view = shared.view;
  view.state = state;
  view.seconds = seconds;
  view.ok += state == PlaceState::kOk;
  view.failed += state == PlaceState::kFailed;
  shared.ended = true;
}

void Add(PlaceShared& shared, const std::string& reason) {
  const std::lock_guard hold(shared.lock);
  shared.view.reason += (shared.view.reason.empty() ? "" : " ") + reason;
}

void Serve(const Task& task) {
  PlaceShared& shared = *task.shared;
  ReceiverRun run;
  run.config = task.config;
  run.face.context = task.context;
  run.face.api = task.api;
  run.face.timeout = kPatience;
  run.face.patient = true;
  run.face.cancelled = [&shared] { return shared.stop.load(); };
  run.face.progress = [&shared](const TransferProgress& now) {
    const std::lock_guard hold(shared.lock);
    shared.view.progress = now;
  };
  RunEnd end = RunEnd::kFailed;
  const Outcome logged = ServeOneOf(run, *task.batch, task.serial, LocalTimeNow(), end);
  if (end == RunEnd::kCancelled) Add(shared, ReceiverStateSentence(run));
  if (!logged) {
    const std::string file = Utf8FromPath(task.batch->log);
    Add(shared, std::string(end == RunEnd::kOk ? "The receiver is right, but its" : "Its") +
                    " row could not be written to the log: " + Reason(Attempt::kWrite, file, logged.error));
  }
  const bool stopped = end == RunEnd::kCancelled;
  const bool ok = end == RunEnd::kOk && logged;
  End(shared,
      ok                  ? PlaceState::kOk
      : stopped && logged ? PlaceState::kStopped
                          : PlaceState::kFailed,
      run.result.seconds);
}

void ServeGuarded(const Task& task) noexcept {
  try {
    Serve(task);
  } catch (const std::bad_alloc&) {
    End(*task.shared, PlaceState::kFailed, 0);
  }
}

// The number of an SDB of the document, from 0.
std::optional<size_t> SdbIn(const std::string& text, const Document& document) {
  const int64_t number = DecimalValue(text);
  if (text.empty() || text.find_first_not_of("0123456789") != text.npos) return std::nullopt;
  if (number < 1 || static_cast<uint64_t>(number) > document.sdbs.size()) return std::nullopt;
  return static_cast<size_t>(number - 1);
}

// Each once.
std::vector<std::string> PortsIn(const std::string& text) {
  std::vector<std::string> ports;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (IsPortName(word) && std::find(ports.begin(), ports.end(), word) == ports.end()) ports.push_back(word);
  }
  return ports;
}

std::string MinutesText(uint64_t seconds) {
  return Format("%llu:%02llu", static_cast<unsigned long long>(seconds / 60),
                static_cast<unsigned long long>(seconds % 60));
}

std::string WorkText(const TransferProgress& now) {
  std::string text = PhaseText(now.phase);
  if (now.total > 0) text += Format(" %llu %%", static_cast<unsigned long long>(now.done * 100 / now.total));
  if (now.total > 0 && now.seconds_left) text += ", " + MinutesText(*now.seconds_left) + " left";
  if (now.repeated > 0) text += Format(", %llu repeated", static_cast<unsigned long long>(now.repeated));
  return text;
}

std::string WhatCame(const PlaceView& view) {
  switch (view.state) {
    case PlaceState::kFree:
      return "Waiting for a serial number";
    case PlaceState::kAtWork:
      return WorkText(view.progress);
    case PlaceState::kOk:
      return Format("written and compared in %.1f s", view.seconds);
    default:
      return view.reason.empty() ? kOutOfMemoryText : view.reason;
  }
}

}  // namespace

Production::Production(const Context& context, std::function<const CommApi*(const std::string& port)> api_of)
    : context_(context), api_of_(std::move(api_of)) {}

Production::~Production() {
  StopAll();
}

void Production::SetPorts(const std::vector<std::string>& ports) {
  std::vector<std::unique_ptr<Workplace>> places;
  for (const std::string& port : ports) {
    const auto of_port = [&port](const auto& place) {
      return place && (place->shared->view.port == port || IsSamePort(place->shared->view.port, port));
    };
    if (std::any_of(places.begin(), places.end(), of_port)) continue;
    const auto found = std::find_if(places_.begin(), places_.end(), of_port);
    if (found != places_.end()) {
      places.push_back(std::move(*found));
      continue;
    }
    places.push_back(std::make_unique<Workplace>());
    places.back()->shared->view.port = port;
  }
  places_ = std::move(places);
}

PlaceView Production::Look(size_t place) const {
  PlaceShared& shared = *places_[place]->shared;
  const std::lock_guard hold(shared.lock);
  return shared.view;
}

bool Production::IsAtWork() const {
  for (size_t i = 0; i < places_.size(); ++i) {
    if (Look(i).state == PlaceState::kAtWork) return true;
  }
  return false;
}

size_t Production::NextFree(size_t from, const std::function<bool(size_t)>& counts) const {
  for (size_t i = 0; i < places_.size(); ++i) {
    const size_t place = (from + i) % places_.size();
    if (counts(place) && Look(place).state != PlaceState::kAtWork) return place;
  }
  return from;
}

std::optional<Refusal> Production::Open(const Context& context, const ProductionForm& form) {
  const ProductionSettings& fields = form.fields;
  if (fields.database.empty()) return Refusal{"Choose the database that the receivers get."};
  const auto batch = std::make_shared<ReceiverBatch>();
  const Path file = PathFromUtf8(fields.database);
  const auto is_file = [&file](const Path& path) { return SameFile(path, file); };
  if (std::any_of(form.unsaved.begin(), form.unsaved.end(), is_file)) {
    return Refusal{
        "The database is open and has changes that are not saved: receivers would not get them. "
        "Close this window, save the database, and come back."};
  }
  Bytes content;
  const ReadResult read = ReadWholeFile(file, content);
  if (read != ReadResult::kDone) {
    Refusal refusal{"The database cannot be read."};
    refusal.detail = ReadReason(file, read.error);
    return refusal;
  }
  const Context about = About(context, fields.database);
  if (!OpenBinBytes(about, content, batch->document)) return Refusal{};
  const auto sdb = SdbIn(fields.sdb, batch->document);
  if (!sdb) return Refusal{Format("The database has the SDBs 1 to %zu.", batch->document.sdbs.size())};
  batch->sdb = *sdb;
  batch->database = fields.database;
  batch->sha256 = Sha256Text(content);
  if (!form.config) return Refusal{"Choose a set, or \"As in Settings\"."};
  const ProjectConfig& config = *form.config;
  batch->configuration = Format("%u/%u/%u", unsigned{config.manufacturer_index},
                                unsigned{config.product_index}, unsigned{config.configuration_index});
  batch->verify = true;
  batch->log = PathFromUtf8(fields.log);
  if (fields.keep_copy) {
    batch->backup_folder = form.copy_folder;
    std::error_code told_below;
    std::filesystem::create_directories(form.copy_folder, told_below);
  }
  if (!MayWriteLog(context, *batch)) return Refusal{};
  batch->document.source = fields.database;
  if (!MayServe(context, *batch, config)) return Refusal{};
  batch_ = batch;
  config_ = config;
  return std::nullopt;
}

// What is told about the fields is the refusal: the next scan would close a box unseen.
std::optional<Refusal> Production::OpenQuietly(const ProductionForm& form) {
  std::vector<Message> told;
  Context listening = context_;
  listening.messages.tell = [&told](const Message& message) { told.push_back(message); };
  listening.messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  auto refusal = Open(listening, form);
  if (!refusal) {
    for (const Message& message : told) context_.messages.tell(message);
  } else if (refusal->text.empty() && !told.empty()) {
    refusal->text = told[0].text;
    refusal->detail = told[0].detail;
  }
  return refusal;
}

std::optional<Refusal> Production::WhyNotNow(size_t place, const std::string& serial) const {
  if (place >= places_.size()) return Refusal{"Choose a port."};
  if (serial.empty()) return Refusal{"Type or scan the serial number of the receiver."};
  for (size_t i = 0; i < places_.size(); ++i) {
    const PlaceView view = Look(i);
    if (view.state != PlaceState::kAtWork) continue;
    if (i == place) return Refusal{view.port + " is still at work. Choose a port that is free."};
    if (view.serial == serial) return Refusal{serial + " is being written at " + view.port + "."};
  }
  return std::nullopt;
}

std::optional<Refusal> Production::Start(Workplace& place, const std::string& serial) {
  if (place.thread.joinable()) place.thread.join();
  std::string why;
  if (!place.folder) place.folder = TemporaryFolder::MakeIn(context_.temporary_folder, "place", why);
  if (!place.folder) {
    Refusal refusal{"Failed to create new directory."};
    refusal.detail = why;
    return refusal;
  }
  PlaceShared& shared = *place.shared;
  PlaceView& view = shared.view;
  Task task{place.shared, batch_, config_, context_, &SystemCommApi(), serial};
  task.config.port_name = view.port;
  task.context.messages = Collect(place.shared);
  task.context.progress = {};
  task.context.temporary_folder = place.folder->path();
  if (api_of_) task.api = api_of_(view.port);
  {
    const std::lock_guard hold(shared.lock);
    view = {view.port, serial, PlaceState::kAtWork, {}, 0, "", view.ok, view.failed};
    shared.stop = false;
  }
  const Outcome started = StartThread(place.thread, [task] { ServeGuarded(task); });
  if (started) return std::nullopt;
  Add(shared, Reason(Attempt::kUsePort, view.port, started.error));
  End(shared, PlaceState::kFailed, 0);
  return std::nullopt;
}

std::optional<Refusal> Production::Begin(size_t place, const std::string& typed, const ProductionForm& form) {
  const std::string serial(Trimmed(typed));
  auto refusal = WhyNotNow(place, serial);
  if (!refusal && !IsAtWork()) refusal = OpenQuietly(form);
  return refusal ? refusal : Start(*places_[place], serial);
}

void Production::Stop(size_t place) {
  if (place < places_.size()) places_[place]->shared->stop = true;
}

void Production::StopAll() {
  for (const auto& place : places_) place->shared->stop = true;
}

std::vector<size_t> Production::TakeEnded() {
  std::vector<size_t> ended;
  for (size_t i = 0; i < places_.size(); ++i) {
    PlaceShared& shared = *places_[i]->shared;
    const std::lock_guard hold(shared.lock);
    if (std::exchange(shared.ended, false)) ended.push_back(i);
  }
  return ended;
}

void ProductionTurn::Begun(const Production& production, const std::function<bool(size_t)>& counts) {
  shown = next;
  next = production.NextFree(next, counts);
}

void ProductionTurn::Ended(const Production& production, size_t place,
                           const std::function<bool(size_t)>& counts) {
  shown = place;
  next = production.Look(next).state == PlaceState::kAtWork ? production.NextFree(next, counts) : next;
}

std::optional<ProjectConfig> ConfigOfSet(const Context& context, const std::vector<OptionSet>& sets,
                                         const std::string& name, const ProjectConfig& in_settings) {
  ProjectConfig config = in_settings;
  if (name.empty()) return config;
  const auto place = FindOptionSet(sets, name);
  return place && LoadOptionSet(context, sets[*place], config) ? std::optional(config) : std::nullopt;
}

std::string PlaceText(const PlaceView& view) {
  const bool ended = view.state != PlaceState::kFree && view.state != PlaceState::kAtWork;
  return (ended ? VerdictHeadline(view.state) + ": " : "") + WhatCame(view);
}

std::string VerdictHeadline(PlaceState state) {
  constexpr const char* kTexts[] = {"READY", "AT WORK", "OK", "FAILED", "STOPPED"};
  return kTexts[static_cast<size_t>(state)];
}

std::string VerdictLine(const PlaceView& view) {
  std::string text = view.port;
  if (!view.serial.empty()) text += "   " + view.serial;
  return text + "   " + WhatCame(view);
}

std::string ProductionCountText(const Production& production) {
  size_t ok = 0, failed = 0;
  for (size_t i = 0; i < production.count(); ++i) {
    const PlaceView view = production.Look(i);
    ok += view.ok;
    failed += view.failed;
  }
  return Format("%zu OK, %zu failed", ok, failed);
}

std::string ProductionConfigText(const ProjectConfig& config) {
  const std::string line = PortStatusText(config);
  return Utf8FromLatin(config.product_name) + " / " + Utf8FromLatin(config.configuration_name) + "   " +
         line.substr(line.find(' ') + 1);
}

ProductionSettings ProposedFields(ProductionSettings kept, const std::string& open_database,
                                  const ProjectConfig& config) {
  if (!open_database.empty()) {
    kept.database = open_database;
    kept.sdb = "1";
  }
  if (PortsIn(kept.ports).empty()) kept.ports = config.port_name;
  return kept;
}

std::vector<PortOffer> OfferPorts(const std::vector<SerialPortInfo>& there, const std::string& ticked) {
  std::vector<PortOffer> offers;
  for (const std::string& choice : PortChoices(there)) offers.push_back({PortNameIn(choice), choice, false});
  for (const std::string& port : PortsIn(ticked)) {
    const auto same = [&port](const PortOffer& offer) { return IsSamePort(offer.port, port); };
    auto found = std::find_if(offers.begin(), offers.end(), same);
    if (found == offers.end()) found = offers.insert(offers.end(), {port, port, false});
    found->ticked = true;
  }
  return offers;
}

size_t FirstTicked(const std::vector<PortOffer>& offers) {
  const auto found =
      std::find_if(offers.begin(), offers.end(), [](const PortOffer& offer) { return offer.ticked; });
  return found == offers.end() ? 0 : static_cast<size_t>(found - offers.begin());
}

std::string TickedPorts(const std::vector<PortOffer>& offers) {
  std::string text;
  for (const PortOffer& offer : offers) {
    if (offer.ticked) text += (text.empty() ? "" : " ") + offer.port;
  }
  return text;
}

}  // namespace vexa
