#pragma once

#include <cstddef>
#include <string>

namespace ormel::benchmarks {

/// About `size` bytes of a reply to `model/list`.
inline std::string modelListReply(std::size_t size) {
  std::string text = R"({"data":[)";
  for (int id = 0; text.size() < size; ++id) {
    if (id > 0) text += ',';
    const std::string number = std::to_string(id);
    text += R"({"id":"model-)" + number + R"(","model":"model-)" + number +
            R"(","upgrade":"model-next","displayName":"Model )" + number +
            R"(","description":"A model for everyday work that answers quickly.","modelSpecialty":"general",)"
            R"("hidden":false,"supportedReasoningEfforts":[)"
            R"({"reasoningEffort":"low","description":"Answers at once"},)"
            R"({"reasoningEffort":"medium","description":"Thinks a little"},)"
            R"({"reasoningEffort":"high","description":"Thinks for long"}],"defaultReasoningEffort":"medium",)"
            R"("inputModalities":["text","image"],"supportsPersonality":true,"multiAgentVersion":"v2",)"
            R"("additionalSpeedTiers":["fast"],"serviceTiers":[)"
            R"({"id":"flex","name":"Flex","description":"Cheaper, and slower"}],"defaultServiceTier":"flex",)"
            R"("isDefault":false})";
  }
  return text + R"(],"nextCursor":"more"})";
}

/// About `size` bytes of a reply to `plugin/list`.
inline std::string pluginListReply(std::size_t size) {
  std::string text = R"({"marketplaces":[{"name":"garden","path":"/home/user/market","plugins":[)";
  for (int id = 0; text.size() < size; ++id) {
    if (id > 0) text += ',';
    const std::string number = std::to_string(id);
    text +=
        R"({"id":"plugin-)" + number + R"(@garden","version":"1.2.3","localVersion":"1.2.0","name":"plugin-)" + number +
        R"(","source":{"type":"local","path":"/home/user/market/plugins/one"},"installed":true,)"
        R"("installedAt":1763697600,"enabled":true,"installPolicy":"AVAILABLE","authPolicy":"ON_INSTALL",)"
        R"("availability":"AVAILABLE","interface":{"displayName":"Plugin","shortDescription":"Does one thing well",)"
        R"("longDescription":"A longer text about the one thing that it does, and how well it does that.",)"
        R"("developerName":"Gardeners","category":"Tools","capabilities":["Read","Write"],)"
        R"("websiteUrl":"https://garden.example/plugin","defaultPrompt":["Plant a tree","Water the tree"],)"
        R"("brandColor":"#3366FF","screenshots":[]},"keywords":["tree","water"]})";
  }
  return text + R"(]}],"marketplaceLoadErrors":[],"featuredPluginIds":["plugin-1@garden"]})";
}

}  // namespace ormel::benchmarks
