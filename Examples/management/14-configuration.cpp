// Lists models and skills, and changes the configuration unless somebody else has changed it meanwhile.
// Usage: 14-configuration [SERVER]

#include <OrmelSDK/AppServerRun/Framing/AppServerRPCError.h>
#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/ConfigRecords.h>
#include <OrmelSDK/Records/ModelRecords.h>
#include <OrmelSDK/Records/SkillRecords.h>

#include <iostream>

namespace {

ormel::ConfigEdit choiceOfModel(const std::string& model) {
  ormel::ConfigEdit edit;
  edit.keyPath = "model";
  edit.value = model;
  return edit;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  const ormel::Ormel ormel(options);
  const ormel::OrmelControlSession session = ormel.makeControlSession();
  // The models of all pages.
  for (const ormel::OrmelModelDescriptor& model : session.listAllModels().get()) {
    std::cout << model.model << (model.isDefault ? ", unless another one is chosen\n" : "\n");
  }
  session.close().get();

  const ormel::ConfigBatchWriteResponse written = ormel.batchWriteConfig({choiceOfModel("simulated-quick")}).get();
  ormel::BatchWriteConfigParams condition;
  condition.expectedVersion = written.version;
  ormel.batchWriteConfig({choiceOfModel("simulated-deep")}, condition).get();
  try {
    ormel.batchWriteConfig({choiceOfModel("simulated")}, condition).get();
  } catch (const ormel::AppServerRPCError& refusal) {
    std::cout << "Refused, since the version is another one by now: " << refusal.code() << '\n';
  }

  ormel::WriteSkillConfigParams skill;
  skill.name = "count-the-birds";
  ormel.writeSkillConfig(false, skill).get();
  for (const ormel::SkillsListEntry& entry : ormel.listSkills().get().data) {
    for (const ormel::SkillSummary& listed : entry.skills) {
      std::cout << listed.name << (listed.enabled ? ": on\n" : ": off\n");
    }
  }
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
