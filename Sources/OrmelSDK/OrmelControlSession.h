#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Management/AccountParams.h"
#include "OrmelSDK/Management/AppParams.h"
#include "OrmelSDK/Management/ConfigParams.h"
#include "OrmelSDK/Management/OrmelControlNotification.h"
#include "OrmelSDK/Management/PluginParams.h"
#include "OrmelSDK/Management/ThreadParams.h"
#include "OrmelSDK/Records/ManagementReplies.h"

namespace ormel {

namespace detail {
class ControlSession;
}

/// Calls on a server process that is kept between them, and the server's notifications. `Ormel` makes it.
///
///     OrmelControlSession session = ormel.makeControlSession();
///     auto notifications = session.notifications().get();        // or co_await
///     session.archiveThread("t1").get();
///     while (auto notification = notifications.nextBlocking()) { ... }
///     session.close().get();
///
/// The first call starts the process; any number of calls can be under way on it at the same time. A process that has
/// ended is replaced by the next call.
///
/// *Thread safety*: all members may be called from any threads.
///
/// *Object lifetimes*: copies are the same session. `close` is how to end it; a session whose last copy goes ends its
/// server process all the same, once no call is under way. A session that was moved from may only be destroyed or
/// assigned to.
///
/// *Errors*: as those of `Ormel`'s calls, but nothing is added to their texts, and a cancelled call fails with
/// `CancelledError`. Every call that fails costs the server process, also one that the server refuses: the other calls
/// that are under way fail with "App-server RPC client terminated", and the next call starts a new process.
///
/// *Fatal*: a server that sends an id which is a whole number outside the signed 64-bit range ends this process, as
/// `JSONValue::intValue` does.
///
/// *Cancellation*: a call whose stop token is triggered fails, as above. There is no time-out.
class OrmelControlSession {
 public:
  explicit OrmelControlSession(std::shared_ptr<detail::ControlSession> session) : session_(std::move(session)) {}

  /// Subscribes to all that the server tells from now on, whatever becomes of its process. A subscriber that lags keeps
  /// the newest 32 notifications and loses the older ones without notice. Destroying or cancelling the channel ends the
  /// subscription; `close` ends the channel. It starts no process, so nothing comes before there was a call. Does not
  /// fail.
  Task<EventChannel<OrmelControlNotification>> notifications() const;

  /// Ends the server process, the calls that are under way, which fail, and all subscriptions. The session can be used
  /// again. Does not fail, and is not cancelled.
  Task<void> close() const;

  // Threads that the server keeps; see `Ormel`.

  Task<ThreadForkResponse> forkThread(const std::string& threadID,
                                      const ForkThreadInSessionParams& params = ForkThreadInSessionParams()) const;
  Task<void> archiveThread(const std::string& threadID) const;
  Task<void> deleteThread(const std::string& threadID) const;
  Task<ThreadReadResponse> unarchiveThread(const std::string& threadID) const;
  Task<void> setThreadName(const std::string& threadID, const std::string& name) const;
  Task<void> compactThread(const std::string& threadID) const;

  // The account that the server is signed in with; see `Ormel`.

  Task<AccountReadResponse> readAccount(const ReadAccountParams& params = ReadAccountParams()) const;

  /// Starts a sign-in that the user completes in a browser. Its end is told by a notification.
  Task<AccountLoginResponse> startParlaneLogin(
      const StartParlaneLoginInSessionParams& params = StartParlaneLoginInSessionParams()) const;

  /// Starts a sign-in that the user completes on any device, by entering a code. Its end is told by a notification.
  Task<AccountLoginResponse> startParlaneDeviceCodeLogin() const;

  /// The key is sent as it is, and not kept.
  Task<AccountLoginResponse> loginWithAPIKey(const std::string& apiKey) const;

  Task<AccountLoginCancelResponse> cancelAccountLogin(const std::string& loginID) const;
  Task<void> logoutAccount() const;
  Task<AccountRateLimitsResponse> readAccountRateLimits() const;
  Task<AccountRateLimitResetCreditConsumeResponse> consumeAccountRateLimitResetCredit(
      const std::string& idempotencyKey, const ConsumeAccountRateLimitResetCreditInSessionParams& params =
                                             ConsumeAccountRateLimitResetCreditInSessionParams()) const;
  Task<AccountTokenUsageResponse> readAccountUsage() const;
  Task<WorkspaceMessagesResponse> readWorkspaceMessages() const;

  /// Asks the owner of the workspace, by mail, to add something.
  Task<AddCreditsNudgeEmailResponse> sendAddCreditsNudgeEmail(AccountAddCreditsNudgeType creditType) const;

  Task<FeedbackUploadResponse> uploadFeedback(
      const std::string& classification,
      const UploadFeedbackInSessionParams& params = UploadFeedbackInSessionParams()) const;

  // Plugins; see `Ormel`.

  Task<PluginListResponse> listPlugins(const ListPluginsParams& params = ListPluginsParams()) const;
  Task<PluginListResponse> listPlugins(const ListPluginsWithRemoteSyncParams& params) const;
  Task<PluginInstalledResponse> listInstalledPlugins(
      const ListInstalledPluginsParams& params = ListInstalledPluginsParams()) const;
  Task<PluginReadResponse> readPlugin(const std::string& pluginName,
                                      const ReadPluginParams& params = ReadPluginParams()) const;
  Task<PluginInstallResponse> installPlugin(const std::string& pluginName,
                                            const InstallPluginParams& params = InstallPluginParams()) const;
  Task<PluginUninstallResponse> uninstallPlugin(const std::string& pluginID,
                                                const UninstallPluginParams& params = UninstallPluginParams()) const;

  // Configuration, and what it makes of models, permissions, skills and hooks; see `Ormel`. `listAllModels` and
  // `listAllPermissionProfiles` ask for page after page until there is no more, and bring the elements in the order in
  // which they came. If a page fails, so does the call, and nothing comes of the pages before. A server whose pages
  // never end keeps the call going until it is cancelled.

  Task<ConfigRequirementsReadResponse> readConfigRequirements() const;

  /// Switches the hook with this key on or off, in the configuration as in the server that is running.
  Task<ConfigBatchWriteResponse> setHookEnabled(const std::string& key, bool enabled) const;

  Task<std::vector<OrmelModelDescriptor>> listAllModels(
      const ListAllModelsParams& params = ListAllModelsParams()) const;
  Task<std::vector<PermissionProfileSummary>> listAllPermissionProfiles(
      const ListAllPermissionProfilesParams& params = ListAllPermissionProfilesParams()) const;
  Task<SkillsListResponse> listSkills(const ListSkillsParams& params = ListSkillsParams()) const;

  /// The hooks of these directories.
  Task<HooksListResponse> listHooks(const std::vector<std::string>& cwds) const;

  // Apps and MCP servers; see `Ormel`. `listAllApps` and `listAllMcpServerStatus` go from page to page as
  // `listAllModels` does.

  Task<std::vector<AppInfo>> listAllApps(const ListAllAppsParams& params = ListAllAppsParams()) const;
  Task<AppsInstalledResponse> listInstalledApps(
      const ListInstalledAppsParams& params = ListInstalledAppsParams()) const;
  Task<AppsReadResponse> readApps(const std::vector<std::string>& appIDs,
                                  const ReadAppsParams& params = ReadAppsParams()) const;
  Task<std::vector<McpServerStatusSummary>> listAllMcpServerStatus(
      const ListAllMcpServerStatusParams& params = ListAllMcpServerStatusParams()) const;

  /// Starts a sign-in to the MCP server of this name, which the user completes in a browser. Its end is told by a
  /// notification.
  Task<McpServerOAuthLoginResponse> startMcpServerOAuthLogin(
      const std::string& name, const StartMcpServerOAuthLoginParams& params = StartMcpServerOAuthLoginParams()) const;

  /// Has the server read the configuration of its MCP servers again.
  Task<void> reloadMcpServerConfig() const;

 private:
  std::shared_ptr<detail::ControlSession> session_;
};

}  // namespace ormel
