// Named sets of what the configuration dialog chooses: the port, the configuration and the options. They are
// kept one a value, "1" and so on, in the settings; one that cannot be read is passed over.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/project_config.h"
#include "core/context.h"
#include "platform/settings_store.h"

namespace vexa {

inline constexpr size_t kMaximumSets = 32, kMaximumSetName = 40;  // characters

struct OptionSet {
  std::string name;       // UTF-8
  std::string file;       // the configuration file, UTF-8
  ProjectConfig choices;  // port, options and positions; nothing that was loaded from the file
  bool hexadecimal = false;
};

// In the order of their names.
std::vector<OptionSet> LoadOptionSets(const SettingsStore& store);
void SaveOptionSets(const SettingsStore& store, const std::vector<OptionSet>& sets);

// Why the sets take none of that name, a sentence; empty: they do. One of the same name, whatever its
// letters' case, is replaced.
std::string WhyNoSet(const std::vector<OptionSet>& sets, const std::string& name);
// Its place; nothing when there is none of that name.
std::optional<size_t> FindOptionSet(const std::vector<OptionSet>& sets, const std::string& name);
void PutOptionSet(std::vector<OptionSet>& sets, OptionSet set);

// `config` with the choices of the set, and what they load from its file. False after a message; `config` is
// then as it was.
bool LoadOptionSet(const Context& context, const OptionSet& set, ProjectConfig& config);

}  // namespace vexa
