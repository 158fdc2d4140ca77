#include "config/project_config.h"

#include "platform/text.h"

namespace vexa {

std::string ConfigurationName(const ProjectConfig& config) {
  if (config.configuration_found)
    return "configuration " + Utf8FromLatin(config.product_name + "/" + config.configuration_name);
  return Format("configuration %u/%u/%u", unsigned{config.manufacturer_index}, unsigned{config.product_index},
                unsigned{config.configuration_index});
}

bool RefuseSettings(const Context& context, const ProjectConfig& config, const std::string& lack) {
  TellWhy(context.messages, Icon::kStop,
          ConfigurationName(config) + ": " + lack + " Choose another configuration, or another file.",
          "Configuration settings not found to process.\nUpdate configuration file and continue");
  return false;
}

}  // namespace vexa
