// What the commands of the editor ask of the configuration file when they run.
#pragma once

#include <cstdint>

#include "config/ecf.h"

namespace vexa {

// To be called before the own preconditions of a command (view/command_table.h). Uploads and downloads of
// images need their places, everything that makes URT files the images' parameters, other commands nothing.
// True without a word when it needs nothing or `IsConfigurationAvailable` finds it; false after one message.
bool ConfigurationServes(const Context& context, const Path& ecf, uint8_t product_index, uint32_t command);

}  // namespace vexa
