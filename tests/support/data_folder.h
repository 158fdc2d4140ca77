// The folder of the sample lists and of the shipped configuration's source.
#pragma once

#include "platform/files.h"

namespace vexa {

Path DataFolder();

}  // namespace vexa
