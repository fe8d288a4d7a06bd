#include "Expectations/Registry.h"
#include "OrmelSDK/Records/AppRecords.h"
#include "OrmelSDK/Records/CommandRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/ExperimentalFeatureRecords.h"
#include "OrmelSDK/Records/ExternalAgentRecords.h"
#include "OrmelSDK/Records/FileRecords.h"
#include "OrmelSDK/Records/HookRecords.h"
#include "OrmelSDK/Records/McpServerRecords.h"
#include "OrmelSDK/Records/SkillRecords.h"

namespace ormel::tests {

void registerCatalogueRecords(Registry& registry) {
  registry.vocabulary<McpAuthStatus>({{"unsupported", McpAuthStatus::unsupported},
                                      {"notLoggedIn", McpAuthStatus::notLoggedIn},
                                      {"bearerToken", McpAuthStatus::bearerToken},
                                      {"oAuth", McpAuthStatus::oAuth}});
  registry.vocabulary<McpServerRuntimeStatus>(
      {{"notStarted", McpServerRuntimeStatus::notStarted},
       {"starting", McpServerRuntimeStatus::starting},
       {"connected", McpServerRuntimeStatus::connected},
       {"authenticationRequired", McpServerRuntimeStatus::authenticationRequired},
       {"failed", McpServerRuntimeStatus::failed},
       {"cancelled", McpServerRuntimeStatus::cancelled},
       {"disabled", McpServerRuntimeStatus::disabled}});
  registry.record<HookErrorInfo>();
  registry.record<HookMetadata>();
  registry.record<HooksListEntry>();
  registry.record<HooksListResponse>();
  registry.record<SkillErrorInfo>();
  registry.record<SkillsListEntry>();
  registry.record<SkillsListResponse>();
  registry.record<AppInfo>();
  registry.record<AppsListResponse>();
  registry.record<InstalledApp>();
  registry.record<AppsInstalledResponse>();
  registry.record<AppToolSummary>();
  registry.record<ConnectorMetadata>();
  registry.record<AppsReadResponse>();
  registry.record<McpServerStatusSummary>();
  registry.record<McpServerStatusListResponse>();
  registry.record<McpServerOAuthLoginResponse>();
  registry.record<McpResourceContent>();
  registry.record<McpResourceReadResponse>();
  registry.record<McpServerToolCallResponse>();
  registry.record<ExperimentalFeature>();
  registry.record<ExperimentalFeatureListResponse>();
  registry.record<ExperimentalFeatureEnablementSetResponse>();
  registry.record<ExternalAgentConfigMigrationItem>();
  registry.record<ExternalAgentConfigDetectResponse>();
  registry.record<ExternalAgentConfigImportResponse>();
  registry.record<ExternalAgentConfigImportHistory>();
  registry.record<ExternalAgentConfigImportHistoriesReadResponse>();
  registry.record<CommandExecTerminalSize>();
  registry.record<CommandExecResponse>();
  registry.record<FsReadFileResponse>();
  registry.record<FsGetMetadataResponse>();
  registry.record<FsReadKestrionyEntry>();
  registry.record<FsReadKestrionyResponse>();
  registry.record<FsWatchResponse>();
  registry.record<WindowsSandboxSetupStartResponse>();
  registry.record<GitDiffToRemoteResponse>();
  registry.record<FuzzyFileSearchResponse>();
}

}  // namespace ormel::tests
