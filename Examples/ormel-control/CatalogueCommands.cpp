#include "CatalogueCommands.h"

#include <iterator>
#include <utility>

#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/ModelRecords.h"
#include "OrmelSDK/Records/PermissionRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"
#include "Values.h"

namespace ormel::control {

namespace {

std::string effortsOf(const OrmelModelDescriptor& model) {
  std::vector<std::string> efforts;
  for (const ReasoningEffortOption& option : model.supportedReasoningEfforts) {
    const bool isDefault = option.reasoningEffort == model.defaultReasoningEffort;
    efforts.push_back(option.reasoningEffort.rawValue + (isDefault ? "*" : ""));
  }
  return joined(efforts);
}

std::string notesOn(const OrmelModelDescriptor& model) {
  std::vector<std::string> notes;
  if (model.isDefault) notes.emplace_back("default");
  if (model.hidden) notes.emplace_back("hidden");
  if (model.upgrade) notes.push_back("gives way to " + *model.upgrade);
  return joined(notes);
}

/// The action of the hook: the command, or the tool that it calls.
std::string handlerOf(const HookMetadata& hook) {
  if (hook.command) return *hook.command;
  if (hook.tool) return hook.server.value_or("?") + "/" + *hook.tool;
  return hook.handlerType.rawValue;
}

}  // namespace

Task<Report> listModels(Server server, bool withHidden) {
  ListAllModelsParams params;
  params.includeHidden = withHidden;
  const auto models = co_await server.session.listAllModels(params);
  Report report;
  report.document = documentOf(models);
  Table table{{{"MODEL", true}, "NAME", "EFFORTS", "NOTES", "DESCRIPTION"}, {}, "The server offers no models."};
  for (const OrmelModelDescriptor& model : models) {
    table.rows.push_back({model.model, model.displayName, effortsOf(model), notesOn(model), model.description});
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> listPermissions(Server server, std::string directory) {
  ListAllPermissionProfilesParams params;
  params.cwd = std::move(directory);
  const auto profiles = co_await server.session.listAllPermissionProfiles(params);
  Report report;
  report.document = documentOf(profiles);
  Table table{{{"PROFILE", true}, "ALLOWED", "DESCRIPTION"}, {}, "The server has no permission profiles."};
  for (const PermissionProfileSummary& profile : profiles) {
    table.rows.push_back({profile.id, yesOrNo(profile.allowed), profile.description.value_or("")});
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> listFeatures(Server server) {
  std::vector<ExperimentalFeature> features;
  ListExperimentalFeaturesParams params;
  do {
    ExperimentalFeatureListResponse page = co_await server.ormel.listExperimentalFeatures(params);
    std::move(page.data.begin(), page.data.end(), std::back_inserter(features));
    params.cursor = std::move(page.nextCursor);
  } while (params.cursor);
  Report report;
  report.document = documentOf(features);
  Table table{{{"FEATURE", true}, "STAGE", "ENABLED", "DEFAULT", "DESCRIPTION"}, {}, "The server has no features."};
  for (const ExperimentalFeature& feature : features) {
    table.rows.push_back({feature.name, feature.stage, yesOrNo(feature.enabled), yesOrNo(feature.defaultEnabled),
                          feature.description.value_or(feature.displayName.value_or(""))});
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> listSkills(Server server, std::string directory) {
  ListSkillsParams params;
  params.cwds.emplace().push_back(std::move(directory));
  const SkillsListResponse response = co_await server.session.listSkills(params);
  Report report;
  report.document = encode(response);
  Table table{{{"SKILL", true}, "ENABLED", "DESCRIPTION", "PATH"}, {}, "No skills are in force here."};
  for (const SkillsListEntry& entry : response.data) {
    for (const SkillSummary& skill : entry.skills) {
      table.rows.push_back({skill.name, yesOrNo(skill.enabled), skill.description, skill.path});
    }
    for (const SkillErrorInfo& error : entry.errors) report.remarks.push_back(error.path + ": " + error.message);
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> listHooks(Server server, std::string directory) {
  std::vector<std::string> directories;
  directories.push_back(std::move(directory));
  const HooksListResponse response = co_await server.session.listHooks(directories);
  Report report;
  report.document = encode(response);
  Table table{
      {{"HOOK", true}, "EVENT", "ENABLED", "TRUST", "SOURCE", "RUNS", "FILE"}, {}, "No hooks are in force here."};
  for (const HooksListEntry& entry : response.data) {
    for (const HookMetadata& hook : entry.hooks) {
      table.rows.push_back({hook.key, hook.eventName.rawValue, yesOrNo(hook.enabled),
                            std::string(rawValue(hook.trustStatus)), std::string(rawValue(hook.source)),
                            handlerOf(hook), hook.sourcePath});
    }
    for (const std::string& warning : entry.warnings) report.remarks.push_back(warning);
    for (const HookErrorInfo& error : entry.errors) report.remarks.push_back(error.path + ": " + error.message);
  }
  report.tables.push_back(std::move(table));
  co_return report;
}

}  // namespace ormel::control
