#include "tests/support/data_folder.h"

namespace vexa {

Path DataFolder() {
  return PathFromUtf8(VEXA_DATA_DIR);
}

}  // namespace vexa
