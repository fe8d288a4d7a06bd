#pragma once

/// The replies of the management calls by name. A program that uses a call includes the header of its reply besides.
namespace ormel {

// OrmelSDK/Records/AccountRecords.h
struct AccountLoginCancelResponse;
struct AccountLoginResponse;
struct AccountRateLimitResetCreditConsumeResponse;
struct AccountRateLimitsResponse;
struct AccountReadResponse;
struct AccountTokenUsageResponse;
struct AddCreditsNudgeEmailResponse;
struct AuthStatusResponse;
struct FeedbackUploadResponse;
struct WorkspaceMessagesResponse;

// OrmelSDK/Records/AppRecords.h
struct AppInfo;
struct AppsInstalledResponse;
struct AppsListResponse;
struct AppsReadResponse;

// OrmelSDK/Records/CommandRecords.h
struct CommandExecResponse;

// OrmelSDK/Records/ConfigRecords.h
struct ConfigBatchWriteResponse;
struct ConfigReadResponse;
struct ConfigRequirementsReadResponse;

// OrmelSDK/Records/DeviceRecords.h
struct DeviceKeyCreateResponse;
struct DeviceKeySignResponse;
struct RemoteControlStatusResponse;
struct WindowsSandboxReadinessResponse;
struct WindowsSandboxSetupStartResponse;

// OrmelSDK/Records/EmptyResponses.h
struct EnvironmentAddResponse;
struct ThreadSettingsUpdateResponse;

// OrmelSDK/Records/ExperimentalFeatureRecords.h
struct ExperimentalFeatureEnablementSetResponse;
struct ExperimentalFeatureListResponse;

// OrmelSDK/Records/ExternalAgentRecords.h
struct ExternalAgentConfigDetectResponse;
struct ExternalAgentConfigImportHistoriesReadResponse;
struct ExternalAgentConfigImportResponse;

// OrmelSDK/Records/FileRecords.h
struct FsGetMetadataResponse;
struct FsReadFileResponse;
struct FsReadKestrionyResponse;
using FsReadDirectoryResponse = FsReadKestrionyResponse;
struct FsWatchResponse;
struct FuzzyFileSearchResponse;
struct GitDiffToRemoteResponse;

// OrmelSDK/Records/HookRecords.h
struct HooksListResponse;

// OrmelSDK/Records/McpServerRecords.h
struct McpResourceReadResponse;
struct McpServerOAuthLoginResponse;
struct McpServerStatusListResponse;
struct McpServerStatusSummary;
struct McpServerToolCallResponse;

// OrmelSDK/Records/ModelRecords.h
struct ModelListResponse;
struct ModelProviderCapabilitiesReadResponse;
struct OrmelModelDescriptor;

// OrmelSDK/Records/PermissionRecords.h
struct PermissionProfileListResponse;
struct PermissionProfileSummary;

// OrmelSDK/Records/PluginRecords.h
struct MarketplaceAddResponse;
struct MarketplaceRemoveResponse;
struct MarketplaceUpgradeResponse;
struct PluginInstallResponse;
struct PluginInstalledResponse;
struct PluginListResponse;
struct PluginReadResponse;
struct PluginShareCheckoutResponse;
struct PluginShareDeleteResponse;
struct PluginShareListResponse;
struct PluginShareSaveResponse;
struct PluginShareUpdateTargetsResponse;
struct PluginSkillReadResponse;
struct PluginUninstallResponse;

// OrmelSDK/Records/SkillRecords.h
struct SkillsListResponse;

// OrmelSDK/Records/ThreadRecords.h
struct ConversationSummaryResponse;
struct ThreadForkResponse;
struct ThreadGoalClearResponse;
struct ThreadGoalGetResponse;
struct ThreadGoalSetResponse;
struct ThreadListResponse;
struct ThreadReadResponse;
struct ThreadUnsubscribeResponse;

// OrmelSDK/Records/ThreadTurnRecords.h
struct ReviewStartResponse;
struct ThreadTurnItemsListResponse;
struct ThreadTurnsListResponse;

}  // namespace ormel
