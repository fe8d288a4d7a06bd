#include <algorithm>
#include <array>
#include <filesystem>

#include "ormel-simulator/Catalogue/Configuration.h"
#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Catalogue/Skills.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

const JSONValue& usersSkills() {
  static const JSONValue value = JSONValue::decode(R"json([
  {"name": "water-the-beds", "description": "Says which beds need water, and how much",
   "shortDescription": "Waters the beds", "path": "/ormel/skills/water-the-beds/skill.md",
   "interface": {"displayName": "Water the beds", "shortDescription": "Waters the beds", "iconSmall": "drop.png",
                 "iconLarge": "can.png", "brandColor": "#2a6f97", "defaultPrompt": "Which beds need water?"}},
  {"name": "count-the-birds", "description": "Counts birds in a text", "path": "/ormel/skills/count-the-birds/skill.md"}
])json");
  return value;
}

bool isMeant(const JSONValue& choice, const std::string& path, const std::string& name) {
  return textMember(choice, "path") == path || textMember(choice, "name") == name;
}

JSONValue listedSkill(const CatalogueView& view, const JSONValue& skill, const std::string& path,
                      const std::string& name) {
  bool enabled = true;
  for (const JSONValue& choice : elementsOf(valueAt(view.config, KeyPath{"skills", "config"}))) {
    if (isMeant(choice, path, name)) enabled = flagMember(choice, "enabled");
  }
  JSONObjectBuilder members;
  members.set("name", name).set("description", anyMember(skill, "description")).set("path", path);
  members.set("shortDescription", anyMember(skill, "shortDescription"));
  return members.set("interface", anyMember(skill, "interface")).set("enabled", enabled).build();
}

std::vector<JSONValue> allSkills(const CatalogueView& view) {
  std::vector<JSONValue> skills;
  for (const JSONValue& skill : elementsOf(usersSkills())) {
    skills.push_back(
        listedSkill(view, skill, textMember(skill, "path").value_or(""), textMember(skill, "name").value_or("")));
  }
  for (const KnownPlugin& plugin : activePlugins(view)) {
    for (const JSONValue& skill : skillsOfPlugin(view, plugin)) skills.push_back(skill);
  }
  return skills;
}

JSONValue listSkills(Catalogue& catalogue, const RequestParams& params) {
  params.flag("forceReload");
  const std::vector<std::string> folders =
      params.textsIfGiven("cwds").value_or(std::vector{std::filesystem::current_path().string()});
  const JSONValue skills = JSONValue::array(allSkills(catalogue.view()));
  std::vector<JSONValue> entries;
  for (const std::string& folder : folders) {
    entries.push_back(JSONValue::object({{"cwd", folder}, {"skills", skills}, {"errors", JSONValue::array()}}));
  }
  return JSONValue::object({{"data", JSONValue::array(entries)}});
}

/// The skill that the params name, with its path and name.
JSONValue addressedSkill(const CatalogueView& view, const RequestParams& params) {
  const auto path = params.textIfGiven("path");
  const auto name = params.textIfGiven("name");
  if (path.has_value() == name.has_value()) {
    throw Refusal(invalidParams, "either path or name of a skill must be given, and not both");
  }
  for (const JSONValue& skill : allSkills(view)) {
    if (path ? textMember(skill, "path") == path : textMember(skill, "name") == name) return skill;
  }
  throw Refusal(invalidParams, "there is no skill " + path.value_or(name.value_or("")));
}

JSONValue writeSkillConfig(Catalogue& catalogue, const RequestParams& params) {
  const bool enabled = params.requiredFlag("enabled");
  const JSONValue skill = addressedSkill(catalogue.view(), params);
  const std::string path = textMember(skill, "path").value_or("");
  const std::string name = textMember(skill, "name").value_or("");
  catalogue.state().change([&](CatalogueDocument& state) {
    std::vector<JSONValue> choices = elementsOf(state.at({"config", "values", "skills", "config"}));
    std::erase_if(choices, [&](const JSONValue& choice) { return isMeant(choice, path, name); });
    choices.push_back(JSONValue::object({{"path", path}, {"name", name}, {"enabled", enabled}}));
    setConfig(state, {"skills", "config"}, JSONValue::array(choices));
  });
  catalogue.client().notify("skills/changed", JSONValue::object());
  return JSONValue::object({{"effectiveEnabled", enabled}});
}

constexpr auto skillRows = std::to_array<CatalogueRequest>({
    {"skills/list", listSkills},
    {"skills/config/write", writeSkillConfig},
});

}  // namespace

std::vector<JSONValue> skillsOfPlugin(const CatalogueView& view, const KnownPlugin& plugin) {
  std::vector<JSONValue> skills;
  for (const JSONValue& skill : elementsOf(anyMember(plugin.data, "skills"))) {
    const std::string name = textMember(skill, "name").value_or("");
    skills.push_back(listedSkill(view, skill, skillPath(plugin, name), plugin.name + ":" + name));
  }
  return skills;
}

CatalogueRequests skillRequests() { return skillRows; }

}  // namespace ormel::simulator
