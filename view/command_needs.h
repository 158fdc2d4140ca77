// What the commands of the editor ask of the configuration file when they run.
#pragma once

#include <cstdint>

#include "config/ecf.h"

namespace vexa {

// To be called before the command's own preconditions. True without a word when its row asks nothing or
// `IsConfigurationAvailable` finds it; false after one message.
bool ConfigurationServes(const Context& context, const Path& ecf, uint8_t product_index, uint32_t command);

}  // namespace vexa
