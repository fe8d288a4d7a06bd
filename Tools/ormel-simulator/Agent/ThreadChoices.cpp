#include "ormel-simulator/Agent/ThreadChoices.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

#include "ormel-simulator/Requests/JSONMembers.h"

namespace ormel::simulator {

namespace {

struct OtherChoice {
  /// In the params of requests.
  std::string_view key;
  /// In answers.
  std::string_view toldAs;
};

constexpr std::array<OtherChoice, 10> otherChoices = {{{"approvalsReviewer", "approvalsReviewer"},
                                                       {"sandbox", "sandbox"},
                                                       {"sandboxPolicy", "sandbox"},
                                                       {"serviceTier", "serviceTier"},
                                                       {"effort", "reasoningEffort"},
                                                       {"summary", "summary"},
                                                       {"permissions", "permissions"},
                                                       {"collaborationMode", "collaborationMode"},
                                                       {"personality", "personality"},
                                                       {"baseInstructions", "baseInstructions"}}};

}  // namespace

ThreadChoices ThreadChoices::ofNewThread() {
  ThreadChoices choices;
  choices.cwd = std::filesystem::current_path().string();
  choices.model = "simulated";
  choices.modelProvider = "simulator";
  choices.approvalPolicy = "on-request";
  return choices;
}

void ThreadChoices::apply(const JSONValue& params) {
  cwd = textMember(params, "cwd").value_or(cwd);
  model = textMember(params, "model").value_or(model);
  modelProvider = textMember(params, "modelProvider").value_or(modelProvider);
  if (auto instructions = textMember(params, "developerInstructions")) developerInstructions = std::move(instructions);
  if (const JSONValue policy = anyMember(params, "approvalPolicy"); !policy.isNull())
    approvalPolicy = policy.detached();
  if (const JSONValue tools = anyMember(params, "dynamicTools"); !tools.isNull()) dynamicTools = tools.detached();
  for (const OtherChoice& choice : otherChoices) {
    const JSONValue* value = params.find(choice.key);
    if (!value) continue;
    if (value->isNull()) {
      others.erase(std::string(choice.toldAs));
    } else {
      others.insert_or_assign(std::string(choice.toldAs), value->detached());
    }
  }
}

JSONValue ThreadChoices::stateJSON() const {
  JSONObjectBuilder told;
  for (const auto& [key, value] : others) told.set(key, value);
  return JSONValue::object({{"cwd", cwd},
                            {"model", model},
                            {"modelProvider", modelProvider},
                            {"developerInstructions", textOrNull(developerInstructions)},
                            {"approvalPolicy", approvalPolicy},
                            {"dynamicTools", dynamicTools},
                            {"others", told.build()}});
}

ThreadChoices ThreadChoices::fromStateJSON(const JSONValue& state) {
  ThreadChoices choices;
  choices.cwd = textMember(state, "cwd").value_or("");
  choices.model = textMember(state, "model").value_or("");
  choices.modelProvider = textMember(state, "modelProvider").value_or("");
  choices.developerInstructions = textMember(state, "developerInstructions");
  choices.approvalPolicy = anyMember(state, "approvalPolicy");
  choices.dynamicTools = anyMember(state, "dynamicTools");
  const JSONValue others = anyMember(state, "others");
  if (const auto* members = others.objectValue()) {
    for (const auto& [key, value] : *members) choices.others.emplace(key, value);
  }
  return choices;
}

}  // namespace ormel::simulator
