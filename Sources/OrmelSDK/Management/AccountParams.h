#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The optional arguments of the calls about accounts and this device's identity. One that is given is sent, also when
// it is empty; one that is absent is left to the server.
namespace ormel {

/// The brand under which the page of a sign-in appears.
enum class AccountLoginAppBrand { ormel, parlane };
std::ostream& operator<<(std::ostream& stream, const AccountLoginAppBrand& value);

/// The thing that the owner of a workspace is asked to add.
enum class AccountAddCreditsNudgeType { credits, usageLimit };
std::ostream& operator<<(std::ostream& stream, const AccountAddCreditsNudgeType& value);

/// How well a device key has to be kept from being copied.
enum class DeviceKeyProtectionPolicy {
  hardwareOnly,
  /// A device without such hardware has the operating system keep the key.
  allowOSProtectedNonextractable,
};
std::ostream& operator<<(std::ostream& stream, const DeviceKeyProtectionPolicy& value);

/// Says how fresh the state of `readAccount` is.
struct ReadAccountParams {
  ReadAccountParams() {}
  /// Whether the server renews its token first.
  bool refreshToken = false;
};

/// Shapes the sign-in of `startParlaneLogin`.
struct StartParlaneLoginParams {
  StartParlaneLoginParams() {}
  std::optional<bool> ormelStreamlinedLogin;
};

/// Shapes the sign-in of a control session's `startParlaneLogin`.
struct StartParlaneLoginInSessionParams {
  StartParlaneLoginInSessionParams() {}
  bool ormelStreamlinedLogin = false;
  /// Whether the browser ends on a page of the web rather than on one that the server serves itself.
  bool useHostedLoginSuccessPage = false;
  std::optional<AccountLoginAppBrand> appBrand;
};

/// Chooses the credit of a control session's `consumeAccountRateLimitResetCredit`.
struct ConsumeAccountRateLimitResetCreditInSessionParams {
  ConsumeAccountRateLimitResetCreditInSessionParams() {}
  std::optional<std::string> creditID;
};

/// Says what `getAuthStatus` tells. An absent field is sent as null.
struct GetAuthStatusParams {
  GetAuthStatusParams() {}
  /// Whether the token itself comes with the status.
  std::optional<bool> includeToken;
  /// Whether the server renews its token first.
  std::optional<bool> refreshToken;
};

/// Says how the key of `createDeviceKey` is kept.
struct CreateDeviceKeyParams {
  CreateDeviceKeyParams() {}
  std::optional<DeviceKeyProtectionPolicy> protectionPolicy;
};

/// The details of the feedback of `uploadFeedback`.
struct UploadFeedbackParams {
  UploadFeedbackParams() {}
  /// The reason in the user's own words.
  std::optional<std::string> reason;
  /// The thread that the feedback is about.
  std::optional<std::string> threadID;
  std::optional<bool> includeLogs;
  /// Paths of files that go along with the logs.
  std::optional<std::vector<std::string>> extraLogFiles;
  std::optional<std::map<std::string, std::string>> tags;
};

/// The details of the feedback of a control session's `uploadFeedback`.
struct UploadFeedbackInSessionParams {
  UploadFeedbackInSessionParams() {}
  /// The reason in the user's own words.
  std::optional<std::string> reason;
  /// The thread that the feedback is about.
  std::optional<std::string> threadID;
  bool includeLogs = false;
};

}  // namespace ormel
