// The window "Production" without its window: one database for many receivers, at several ports side by side.
//
// Each port is a place with a thread of its own. A serial number begins a run at a place: the upload, read
// back and compared, with a copy before it where that is asked for. The run ends in a verdict and a row of
// the log; then the place is free for the next number.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/option_sets.h"
#include "config/project_config.h"
#include "config/settings.h"
#include "core/context.h"
#include "platform/serial.h"
#include "serial/progress.h"
#include "view/refusal.h"

namespace vexa {

enum class PlaceState {
  kFree,    // nothing was done here
  kAtWork,  // a run is under way
  kOk,      // the last one is written and compared; so are the others free for the next number
  kFailed,
  kStopped,  // by the user
};

// What is known of a place.
struct PlaceView {
  std::string port;
  std::string serial;  // of the receiver here, or of the last one
  PlaceState state = PlaceState::kFree;
  TransferProgress progress;  // at work
  double seconds = 0;         // of the last run
  std::string reason;         // why it failed, and what state the receiver is in; sentences
  size_t ok = 0, failed = 0;  // runs that ended so; stopped ones are in neither
};

// What the window's fields hold.
struct ProductionForm {
  ProductionSettings fields;  // its ports are not looked at
  Path copy_folder;
  std::optional<ProjectConfig> config;  // its port is not looked at; nothing: none was chosen
  std::vector<Path> unsaved;            // open files whose windows show more than the disk holds
};

struct Workplace;
struct ReceiverBatch;

class Production {
 public:
  // `context` tells what a user must know of a database that is sent all the same; scratch folders are made
  // below its temporary one. `api_of` gives what opens a port; empty: the system.
  Production(const Context& context, std::function<const CommApi*(const std::string& port)> api_of = {});
  ~Production();  // stops what is at work and waits for it
  Production(const Production&) = delete;
  Production& operator=(const Production&) = delete;

  // A place for each port; the names differ in the sense of IsSamePort. Places that are there keep theirs.
  void SetPorts(const std::vector<std::string>& ports);
  size_t count() const { return places_.size(); }
  PlaceView Look(size_t place) const;
  bool IsAtWork() const;
  // The next free place from `from` on, in turn, among those for which `counts` holds; `from` when there is
  // none.
  size_t NextFree(size_t from, const std::function<bool(size_t)>& counts) const;

  // A serial number was typed or scanned for the place. The fields count, and their database is read, when
  // nothing else is at work. Nothing: the run has begun.
  std::optional<Refusal> Begin(size_t place, const std::string& typed, const ProductionForm& form);
  void Stop(size_t place);
  void StopAll();
  // The places whose runs have ended since the last call.
  std::vector<size_t> TakeEnded();

 private:
  std::optional<Refusal> WhyNotNow(size_t place, const std::string& serial) const;
  std::optional<Refusal> Open(const Context& context, const ProductionForm& form);
  std::optional<Refusal> OpenQuietly(const ProductionForm& form);
  std::optional<Refusal> Start(Workplace& place, const std::string& serial);
  Context context_;
  std::function<const CommApi*(const std::string& port)> api_of_;
  std::vector<std::unique_ptr<Workplace>> places_;
  std::shared_ptr<const ReceiverBatch> batch_;
  ProjectConfig config_;
};

// Whose turn it is among the places, and whose verdict stands large. `counts` holds for those that take
// turns.
struct ProductionTurn {
  size_t next = 0;   // the place that gets the next number
  size_t shown = 0;  // the place whose verdict stands large: what was done last

  void Choose(size_t place) { next = shown = place; }
  // A run has begun at `next`.
  void Begun(const Production& production, const std::function<bool(size_t)>& counts);
  // A run has ended at `place`, which has got free: nobody waits at a place that is still at work.
  void Ended(const Production& production, size_t place, const std::function<bool(size_t)>& counts);
};

// What the receivers are by the name of a set; by an empty one, as in the settings. Nothing when there is no
// such set, or after a message when it cannot be loaded.
std::optional<ProjectConfig> ConfigOfSet(const Context& context, const std::vector<OptionSet>& sets,
                                         const std::string& name, const ProjectConfig& in_settings);

// "Waiting for a serial number", "Uploading 45 %, 0:05 left, 2 repeated", "OK: written and compared in
// 25.3 s", "FAILED: ...", "STOPPED: ...".
std::string PlaceText(const PlaceView& view);
// The verdict as it stands large: "OK", "FAILED", "STOPPED", "AT WORK", "READY"; and below it the port, the
// serial number and what else PlaceText says.
std::string VerdictHeadline(PlaceState state);
std::string VerdictLine(const PlaceView& view);
// "12 OK, 1 failed": of all places.
std::string ProductionCountText(const Production& production);

// "Standard Receiver / Software only   115200 8 N 1": what the receivers are, and the line.
std::string ProductionConfigText(const ProjectConfig& config);

// What the fields hold when the window opens: `open_database`, the file of the active database window, goes
// before the one of last time; without ports of last time it is the configuration's.
ProductionSettings ProposedFields(ProductionSettings kept, const std::string& open_database,
                                  const ProjectConfig& config);

// A port as the window offers it.
struct PortOffer {
  std::string port;
  std::string text;     // with what is behind it
  bool ticked = false;  // it takes turns
};
// The ports that can be chosen, and behind them those of `ticked` (names between blanks) that are not among
// them. Those of `ticked` have the ticks.
std::vector<PortOffer> OfferPorts(const std::vector<SerialPortInfo>& there, const std::string& ticked);
// The place of the first one with a tick; 0 when none has one.
size_t FirstTicked(const std::vector<PortOffer>& offers);
// The names of those with a tick, between blanks.
std::string TickedPorts(const std::vector<PortOffer>& offers);

}  // namespace vexa
