#include "view/command_needs.h"

#include "view/command_table.h"

namespace vexa {

bool ConfigurationServes(const Context& context, const Path& ecf, uint8_t product_index, uint32_t command) {
  const CommandInfo* info = FindCommand(command);
  if (!info || !info->asks.Any()) return true;
  bool told = false;
  Context listening = context;
  listening.messages.tell = [&](const Message& message) {
    told = true;
    context.messages.tell(message);
  };
  if (IsConfigurationAvailable(listening, ecf, product_index, info->asks)) return true;
  if (!told) {
    TellWhy(context.messages, Icon::kStop,
            Utf8FromPath(ecf) +
                ": No configuration of the product has what the command needs. Choose another "
                "product, or another file.",
            "Configuration settings not found to process.\nUpdate configuration file and continue");
  }
  return false;
}

}  // namespace vexa
