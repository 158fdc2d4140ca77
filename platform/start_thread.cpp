#include <system_error>

#include "platform/serial.h"

namespace vexa {

Outcome StartThread(std::thread& thread, std::function<void()> run) {
  try {
    thread = std::thread(std::move(run));
    return true;
  } catch (const std::system_error& error) {
    return error.code();
  }
}

}  // namespace vexa
