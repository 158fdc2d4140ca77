// What the commands of the editor ask of the configuration file when they run.
#pragma once

#include <cstdint>

#include "config/ecf.h"

namespace vexa {

// What the command (view/command_table.h) needs: uploads and downloads of images their places, everything
// that makes URT files the images' parameters. Nothing for all other commands.
Facilities FacilitiesOf(uint32_t command);

// To be called before the command's own preconditions. True without a word when it needs nothing or
// `IsConfigurationAvailable` finds it; false after one message.
bool ConfigurationServes(const Context& context, const Path& ecf, uint8_t product_index, uint32_t command);

}  // namespace vexa
