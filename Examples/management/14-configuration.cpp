// Lists models, changes the configuration unless it has changed meanwhile, and switches a skill off and on.
// Usage: 14-configuration [SERVER]

#include <OrmelSDK/OrmelSDK.h>

#include <iostream>

namespace {

void listModels(const ormel::OrmelControlSession& session) {
  // Those of all pages.
  for (const ormel::OrmelModelDescriptor& model : session.listAllModels().get()) {
    std::cout << model.model << (model.isDefault ? ", unless another one is chosen\n" : "\n");
  }
  session.close().get();
}

ormel::ConfigEdit visitors(const ormel::JSONValue& value) {
  ormel::ConfigEdit edit;
  edit.keyPath = "example.visitors";
  edit.value = value;
  return edit;
}

void changeConfiguration(const ormel::Ormel& ormel) {
  const ormel::ConfigBatchWriteResponse written = ormel.batchWriteConfig({visitors(1)}).get();
  ormel::BatchWriteConfigParams condition;
  condition.expectedVersion = written.version;
  ormel.batchWriteConfig({visitors(2)}, condition).get();
  try {
    ormel.batchWriteConfig({visitors(3)}, condition).get();
  } catch (const ormel::AppServerRPCError& refusal) {
    std::cout << "Refused, since the version is another one by now: " << refusal.code() << '\n';
  }
  // Null takes the value out.
  ormel.batchWriteConfig({visitors(ormel::JSONValue())}).get();
}

void switchSkill(const ormel::Ormel& ormel) {
  const ormel::SkillsListResponse before = ormel.listSkills().get();
  if (before.data.empty() || before.data.front().skills.empty()) return;

  ormel::WriteSkillConfigParams skill;
  skill.path = before.data.front().skills.front().path;
  ormel.writeSkillConfig(false, skill).get();
  const ormel::SkillSummary after = ormel.listSkills().get().data.at(0).skills.at(0);
  std::cout << after.name << (after.enabled ? " is still on\n" : " is off\n");
  ormel.writeSkillConfig(true, skill).get();
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  listModels(ormel.makeControlSession());
  changeConfiguration(ormel);
  switchSkill(ormel);
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
