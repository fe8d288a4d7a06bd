#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Diagnosis.h"
#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Management/AccountParams.h"
#include "OrmelSDK/Management/AppParams.h"
#include "OrmelSDK/Management/CallPerformer.h"
#include "OrmelSDK/Management/CommandParams.h"
#include "OrmelSDK/Management/ConfigParams.h"
#include "OrmelSDK/Management/FileParams.h"
#include "OrmelSDK/Management/PluginParams.h"
#include "OrmelSDK/Management/ThreadParams.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"
#include "OrmelSDK/OrmelControlSession.h"
#include "OrmelSDK/Records/ManagementReplies.h"
#include "OrmelSDK/Thread.h"

namespace ormel {

namespace detail {
class OneShotPerformer;
}

/// The front door of the library: it finds the server executable once and makes what an application works with.
///
///     Ormel ormel;
///     Thread thread = ormel.startThread();
///     ThreadListResponse page = ormel.listThreads().get();       // or co_await; include Records/ThreadRecords.h
///
/// Its calls manage what the server keeps. Each starts a server process of its own, sends one request and stops the
/// process before it ends; who makes many, or wants to hear the server's notifications, uses a control session.
///
/// *Thread safety*: immutable; may be used from any threads. Calls at the same time do not see each other.
///
/// *Object lifetimes*: what it makes, and calls under way, do not need it any more. Copies are independent.
///
/// *Errors*: construction does not fail. That there is no executable shows when a process is to be started. A call
/// fails with `OrmelProcessError` if the server cannot be started, with `AppServerRPCError` if the server refuses it,
/// and with `ThreadRunError` of the kind `streamError` if the connection breaks or the reply is not what it should be.
/// Arguments are not examined on this side.
///
/// *Fatal*: a server that sends an id which is a whole number outside the signed 64-bit range ends this process, as
/// `JSONValue::intValue` does.
///
/// *Cancellation*: a call whose stop token is triggered fails with `ThreadRunError` of the kind `streamError`:
/// "App-server RPC thread/list was cancelled". Its server process is stopped; there is no time-out.
class Ormel {
 public:
  /// Looks for the executable; `OrmelOptions` says where.
  explicit Ormel(OrmelOptions options = OrmelOptions());
  // Copied, never moved from: every instance can be used.
  Ormel(const Ormel&) = default;
  Ormel& operator=(const Ormel&) = default;

  /// The server executable that is used, or the bare name "ormel" if none was found.
  const std::string& executablePath() const noexcept;

  /// Directories that are put ahead of the server's `PATH`.
  const std::vector<std::string>& ormelPathDirectories() const noexcept;

  /// Those given, with `selectedOrmelPathOverride` telling what the search came to.
  const OrmelOptions& options() const noexcept;

  /// The executable that a path leads to, which may be that of a script: the one that the constructor would use.
  static std::string normalizedCLIPath(const std::string& path);

  /// A new conversation. Nothing is sent before its first turn.
  Thread startThread(ThreadOptions options = ThreadOptions()) const;

  /// A conversation that the server knows. Nothing is sent before its first operation.
  Thread resumeThread(std::string id, ThreadOptions options = ThreadOptions()) const;

  /// A session that keeps its server process between calls. Nothing is started before its first call.
  OrmelControlSession makeControlSession() const;

  /// The facts about a server that was named and passed over, or about a search that has found none; null if all is
  /// well. For a program that wants to tell its user before it starts anything: nothing is started.
  std::shared_ptr<const FailureCause> searchProblem() const;

  /// Looks at the whole set-up: where the server was looked for and what is there, whether it can be started, and what
  /// it answers to the handshake. Starts one server process at most, which has ended with all of its process group when
  /// this ends. The server is the one that the constructor found; the files are looked at as they are now.
  ///
  /// *Errors*: none for a set-up that is not usable; the record says so. `CancelledError` if its task is cancelled.
  Task<Diagnosis> diagnose(const DiagnosisOptions& options = DiagnosisOptions()) const;

  /// Any call, for what this library has no operation for. The result is read as the record, which is one that has a
  /// JSON form, or `JSONValue`.
  template <typename Record>
  Task<Record> performRPC(
      std::string method, std::optional<JSONValue> params = std::nullopt,
      AppServerInitializeCapabilities initializeCapabilities = AppServerInitializeCapabilities::forManagement()) const {
    return detail::performFor<Record>(performer(std::move(initializeCapabilities)), std::move(method),
                                      std::move(params));
  }

  /// Sends a notification to a server process of its own, which gets half a second to act on it and exit. Unlike those
  /// of a call its errors, `CancelledError` among them, come as they are.
  Task<void> performNotification(std::string method, std::optional<JSONValue> params = std::nullopt) const;

  // Threads that the server keeps.

  /// A page of the stored threads.
  Task<ThreadListResponse> listThreads(const ListThreadsParams& params = ListThreadsParams()) const;

  /// A page of the threads that the server has in memory.
  Task<ThreadListResponse> listLoadedThreads(const ListLoadedThreadsParams& params = ListLoadedThreadsParams()) const;

  Task<ThreadReadResponse> readThread(const std::string& threadID,
                                      const ReadThreadParams& params = ReadThreadParams()) const;

  /// Makes a thread that goes on where another one is.
  Task<ThreadForkResponse> forkThread(const std::string& threadID,
                                      const ForkThreadParams& params = ForkThreadParams()) const;

  Task<void> archiveThread(const std::string& threadID) const;
  Task<void> deleteThread(const std::string& threadID) const;
  Task<ThreadReadResponse> unarchiveThread(const std::string& threadID) const;

  /// Has the server drop the thread from memory when nobody else uses it.
  Task<ThreadUnsubscribeResponse> unsubscribeThread(const std::string& threadID) const;

  Task<void> setThreadName(const std::string& threadID, const std::string& name) const;

  /// Has the server shorten the thread's history.
  Task<void> startThreadCompaction(const std::string& threadID) const;

  /// Runs a command of the user's in the thread.
  Task<void> runThreadShellCommand(const std::string& threadID, const std::string& command) const;

  /// Lets the agent do what its guardian has denied. `event` is the denial as the server reported it.
  Task<void> approveGuardianDeniedAction(const std::string& threadID, const JSONValue& event) const;

  Task<ThreadReadResponse> updateThreadMetadata(
      const std::string& threadID, const UpdateThreadMetadataParams& params = UpdateThreadMetadataParams()) const;

  /// Changes the settings that the thread's next turn runs under.
  Task<ThreadSettingsUpdateResponse> updateThreadSettings(
      const std::string& threadID, const UpdateThreadSettingsParams& params = UpdateThreadSettingsParams()) const;

  /// Adds items, in the form of the model's interface, to the thread's history.
  Task<void> injectThreadItems(const std::string& threadID, const std::vector<JSONValue>& items) const;

  /// A page of the thread's turns.
  Task<ThreadTurnsListResponse> listThreadTurns(const std::string& threadID,
                                                const ListThreadTurnsParams& params = ListThreadTurnsParams()) const;

  /// A page of a turn's items. A server that does not know the call is asked again by its older name, which costs a
  /// second process.
  Task<ThreadTurnItemsListResponse> listThreadTurnItems(
      const std::string& threadID, const std::string& turnID,
      const ListThreadTurnItemsParams& params = ListThreadTurnItemsParams()) const;

  Task<ThreadGoalSetResponse> setThreadGoal(const std::string& threadID,
                                            const SetThreadGoalParams& params = SetThreadGoalParams()) const;
  Task<ThreadGoalGetResponse> readThreadGoal(const std::string& threadID) const;
  Task<ThreadGoalClearResponse> clearThreadGoal(const std::string& threadID) const;

  /// Starts a review. It runs in the server process of this call and ends with it; `Thread::startReviewStreamed` makes
  /// one whose events can be followed.
  Task<ReviewStartResponse> startReview(const std::string& threadID, const ReviewTarget& target,
                                        const StartReviewParams& params = StartReviewParams()) const;

  Task<ConversationSummaryResponse> getConversationSummary(
      const GetConversationSummaryParams& params = GetConversationSummaryParams()) const;

  // The account that the server is signed in with, and the identity of this device. A sign-in goes on while the user is
  // in the browser, so that it takes a session to see its end.

  Task<AccountReadResponse> readAccount(const ReadAccountParams& params = ReadAccountParams()) const;

  /// Starts a sign-in that the user completes in a browser.
  Task<AccountLoginResponse> startParlaneLogin(const StartParlaneLoginParams& params = StartParlaneLoginParams()) const;

  /// The key is sent as it is, and not kept.
  Task<AccountLoginResponse> loginWithAPIKey(const std::string& apiKey) const;

  /// Gives up a sign-in that has begun.
  Task<AccountLoginCancelResponse> cancelAccountLogin(const std::string& loginID) const;

  Task<void> logoutAccount() const;
  Task<AccountRateLimitsResponse> readAccountRateLimits() const;

  /// Uses a credit to start the rate limits anew. A call that is repeated with the same key uses no second credit.
  Task<AccountRateLimitResetCreditConsumeResponse> consumeAccountRateLimitResetCredit(
      const std::string& idempotencyKey) const;

  Task<AccountTokenUsageResponse> readAccountUsage() const;

  /// The messages of the workspace's owner to its members.
  Task<WorkspaceMessagesResponse> readWorkspaceMessages() const;

  /// Asks the owner of the workspace, by mail, to add something: "credits" or "usage_limit".
  Task<AddCreditsNudgeEmailResponse> sendAddCreditsNudgeEmail(const std::string& creditType) const;

  Task<AuthStatusResponse> getAuthStatus(const GetAuthStatusParams& params = GetAuthStatusParams()) const;

  /// Makes a key that does not leave the device.
  Task<DeviceKeyCreateResponse> createDeviceKey(const std::string& accountUserID, const std::string& clientID,
                                                const CreateDeviceKeyParams& params = CreateDeviceKeyParams()) const;

  /// The public half of a device key.
  Task<DeviceKeyCreateResponse> readDeviceKeyPublic(const std::string& keyID) const;

  /// Signs a payload, in the server's own form, with a device key.
  Task<DeviceKeySignResponse> signDeviceKey(const std::string& keyID, const JSONValue& payload) const;

  /// `classification` is the kind of feedback, in the server's own word.
  Task<FeedbackUploadResponse> uploadFeedback(const std::string& classification,
                                              const UploadFeedbackParams& params = UploadFeedbackParams()) const;

  // Plugins and the marketplaces that they come from.

  Task<PluginListResponse> listPlugins(const ListPluginsParams& params = ListPluginsParams()) const;

  /// The same under the older name of its flag.
  Task<PluginListResponse> listPlugins(const ListPluginsWithRemoteSyncParams& params) const;

  Task<PluginInstalledResponse> listInstalledPlugins(
      const ListInstalledPluginsParams& params = ListInstalledPluginsParams()) const;

  Task<PluginReadResponse> readPlugin(const std::string& pluginName,
                                      const ReadPluginParams& params = ReadPluginParams()) const;
  Task<PluginReadResponse> readPlugin(const PluginRequestTarget& target) const;

  Task<PluginInstallResponse> installPlugin(const std::string& pluginName,
                                            const InstallPluginParams& params = InstallPluginParams()) const;
  Task<PluginInstallResponse> installPlugin(
      const PluginRequestTarget& target, const InstallPluginTargetParams& params = InstallPluginTargetParams()) const;

  Task<PluginUninstallResponse> uninstallPlugin(const std::string& pluginID,
                                                const UninstallPluginParams& params = UninstallPluginParams()) const;

  /// A skill of a plugin that need not be installed.
  Task<PluginSkillReadResponse> readPluginSkill(const std::string& remoteMarketplaceName,
                                                const std::string& remotePluginID, const std::string& skillName) const;

  /// Shares the plugin at a path.
  Task<PluginShareSaveResponse> savePluginShare(const std::string& pluginPath,
                                                const SavePluginShareParams& params = SavePluginShareParams()) const;

  /// Changes whom a shared plugin is shared with.
  Task<PluginShareUpdateTargetsResponse> updatePluginShareTargets(
      const std::string& remotePluginID, PluginShareUpdateDiscoverability discoverability,
      const std::vector<PluginShareTarget>& shareTargets) const;

  Task<PluginShareListResponse> listPluginShares() const;

  /// Makes a copy of a shared plugin on this machine, to work on.
  Task<PluginShareCheckoutResponse> checkoutPluginShare(const std::string& remotePluginID) const;

  Task<PluginShareDeleteResponse> deletePluginShare(const std::string& remotePluginID) const;

  /// Adds the marketplace at a path or in a repository.
  Task<MarketplaceAddResponse> addMarketplace(const std::string& source,
                                              const AddMarketplaceParams& params = AddMarketplaceParams()) const;

  Task<MarketplaceRemoveResponse> removeMarketplace(const std::string& marketplaceName) const;

  /// Brings marketplaces to the present state of their repositories.
  Task<MarketplaceUpgradeResponse> upgradeMarketplaces(
      const UpgradeMarketplacesParams& params = UpgradeMarketplacesParams()) const;

  // Configuration, and what it makes of models, permissions, features, skills and hooks.

  Task<ConfigReadResponse> readConfig(const ReadConfigParams& params = ReadConfigParams()) const;
  Task<ConfigRequirementsReadResponse> readConfigRequirements() const;

  /// `keyPath` is the keys down to the value, joined by dots.
  Task<void> writeConfigValue(const std::string& keyPath, const JSONValue& value, ConfigMergeStrategy mergeStrategy,
                              const WriteConfigValueParams& params = WriteConfigValueParams()) const;

  /// Writes all changes or none.
  Task<ConfigBatchWriteResponse> batchWriteConfig(
      const std::vector<ConfigEdit>& edits, const BatchWriteConfigParams& params = BatchWriteConfigParams()) const;

  /// A page of the models. A session lists them all.
  Task<ModelListResponse> listModels(const ListModelsParams& params = ListModelsParams()) const;

  Task<ModelProviderCapabilitiesReadResponse> readModelProviderCapabilities() const;

  /// A page of the permission profiles. A session lists them all.
  Task<PermissionProfileListResponse> listPermissionProfiles(
      const ListPermissionProfilesParams& params = ListPermissionProfilesParams()) const;

  /// A page of the experimental features.
  Task<ExperimentalFeatureListResponse> listExperimentalFeatures(
      const ListExperimentalFeaturesParams& params = ListExperimentalFeaturesParams()) const;

  /// Switches features, by name, on or off.
  Task<ExperimentalFeatureEnablementSetResponse> setExperimentalFeatureEnablement(
      const std::map<std::string, bool>& enablement) const;

  Task<SkillsListResponse> listSkills(const ListSkillsParams& params = ListSkillsParams()) const;
  Task<void> writeSkillConfig(bool enabled, const WriteSkillConfigParams& params = WriteSkillConfigParams()) const;

  /// Tells a server further directories of skills, by `performNotification`.
  Task<void> setSkillExtraRoots(const std::vector<std::string>& extraRoots) const;

  Task<HooksListResponse> listHooks(const ListHooksParams& params = ListHooksParams()) const;

  /// Looks for the configuration of other agents, to import.
  Task<ExternalAgentConfigDetectResponse> detectExternalAgentConfig(
      const DetectExternalAgentConfigParams& params = DetectExternalAgentConfigParams()) const;

  /// Imports what was detected. Items go back as they came.
  Task<ExternalAgentConfigImportResponse> importExternalAgentConfig(
      const std::vector<ExternalAgentConfigMigrationItem>& migrationItems,
      const ImportExternalAgentConfigParams& params = ImportExternalAgentConfigParams()) const;

  Task<ExternalAgentConfigImportHistoriesReadResponse> readExternalAgentConfigImportHistories() const;

  // Apps and MCP servers.

  /// A page of the apps. A session lists them all.
  Task<AppsListResponse> listApps(const ListAppsParams& params = ListAppsParams()) const;

  Task<AppsInstalledResponse> listInstalledApps(
      const ListInstalledAppsParams& params = ListInstalledAppsParams()) const;
  Task<AppsReadResponse> readApps(const std::vector<std::string>& appIDs,
                                  const ReadAppsParams& params = ReadAppsParams()) const;

  /// A page of the MCP servers. A session lists them all.
  Task<McpServerStatusListResponse> listMcpServerStatus(
      const ListMcpServerStatusParams& params = ListMcpServerStatusParams()) const;

  /// Starts a sign-in to the MCP server of this name, which the user completes in a browser.
  Task<McpServerOAuthLoginResponse> startMcpServerOAuthLogin(
      const std::string& name, const StartMcpServerOAuthLoginParams& params = StartMcpServerOAuthLoginParams()) const;

  /// Has the server read the configuration of its MCP servers again.
  Task<void> reloadMcpServerConfig() const;

  Task<McpResourceReadResponse> readMcpResource(const std::string& threadID, const std::string& server,
                                                const std::string& uri) const;
  Task<McpServerToolCallResponse> callMcpServerTool(
      const std::string& threadID, const std::string& server, const std::string& tool,
      const CallMcpServerToolParams& params = CallMcpServerToolParams()) const;

  // Commands and the environments that they run in. A command ends with the server process of its call, so that no
  // other call of this object reaches it.

  /// Runs a program with its arguments, and waits for its end.
  Task<CommandExecResponse> executeCommand(const std::vector<std::string>& command,
                                           const ExecuteCommandParams& params = ExecuteCommandParams()) const;

  Task<void> writeCommandInput(const std::string& processID,
                               const WriteCommandInputParams& params = WriteCommandInputParams()) const;

  /// Changes the size, in characters, of a command's terminal.
  Task<void> resizeCommand(const std::string& processID, std::int64_t rows, std::int64_t columns) const;

  Task<void> terminateCommand(const std::string& processID) const;

  /// Makes the machine behind another server known as an environment of this one.
  Task<EnvironmentAddResponse> addEnvironment(const std::string& environmentID, const std::string& execServerURL) const;

  Task<RemoteControlStatusResponse> enableRemoteControl() const;
  Task<RemoteControlStatusResponse> disableRemoteControl() const;
  Task<RemoteControlStatusResponse> readRemoteControlStatus() const;
  Task<WindowsSandboxReadinessResponse> readWindowsSandboxReadiness() const;
  Task<WindowsSandboxSetupStartResponse> startWindowsSandboxSetup(
      WindowsSandboxSetupMode mode,
      const StartWindowsSandboxSetupParams& params = StartWindowsSandboxSetupParams()) const;

  // Files on the server's machine.

  Task<FsReadFileResponse> readFile(const std::string& path) const;

  /// Replaces the file's contents by bytes in Base64.
  Task<void> writeFile(const std::string& path, const std::string& dataBase64) const;

  Task<void> createDirectory(const std::string& path,
                             const CreateDirectoryParams& params = CreateDirectoryParams()) const;
  Task<FsGetMetadataResponse> getFileMetadata(const std::string& path) const;
  Task<FsReadDirectoryResponse> readDirectory(const std::string& path) const;
  Task<void> removePath(const std::string& path, const RemovePathParams& params = RemovePathParams()) const;
  Task<void> copyPath(const std::string& sourcePath, const std::string& destinationPath,
                      const CopyPathParams& params = CopyPathParams()) const;

  /// Has the server tell of changes at a path, under an id of the caller's choice.
  Task<FsWatchResponse> watchPath(const std::string& watchID, const std::string& path) const;

  Task<void> unwatchPath(const std::string& watchID) const;

  /// Searches directories for files whose paths are like the query.
  Task<FuzzyFileSearchResponse> fuzzyFileSearch(const std::string& query, const std::vector<std::string>& roots,
                                                const FuzzyFileSearchParams& params = FuzzyFileSearchParams()) const;

  /// How a working copy differs from what its remote repository has.
  Task<GitDiffToRemoteResponse> gitDiffToRemote(const std::string& workingDirectory) const;

 private:
  Thread thread(std::optional<std::string> id, ThreadOptions options) const;
  std::shared_ptr<detail::CallPerformer> performer() const;
  std::shared_ptr<detail::CallPerformer> performer(AppServerInitializeCapabilities initializeCapabilities) const;

  std::shared_ptr<detail::OneShotPerformer> performer_;
};

}  // namespace ormel
