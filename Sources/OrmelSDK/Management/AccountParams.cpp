#include "OrmelSDK/Management/AccountParams.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/ParamsTable.h"

template <>
struct ormel::coding::EnumerationTable<ormel::AccountLoginAppBrand> {
  static constexpr auto rule = closed;
  static constexpr Word<AccountLoginAppBrand> words[] = {
      {AccountLoginAppBrand::ormel, "ormel"},
      {AccountLoginAppBrand::parlane, "parlane"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::AccountAddCreditsNudgeType> {
  static constexpr auto rule = closed;
  static constexpr Word<AccountAddCreditsNudgeType> words[] = {
      {AccountAddCreditsNudgeType::credits, "credits"},
      {AccountAddCreditsNudgeType::usageLimit, "usage_limit"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::DeviceKeyProtectionPolicy> {
  static constexpr auto rule = closed;
  static constexpr Word<DeviceKeyProtectionPolicy> words[] = {
      {DeviceKeyProtectionPolicy::hardwareOnly, "hardware_only"},
      {DeviceKeyProtectionPolicy::allowOSProtectedNonextractable, "allow_os_protected_nonextractable"},
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ReadAccountParams> {
  static constexpr Field fields[] = {
      always<&ReadAccountParams::refreshToken>("refreshToken"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::StartParlaneLoginParams> {
  static constexpr Field fields[] = {
      ifGiven<&StartParlaneLoginParams::ormelStreamlinedLogin>("ormelStreamlinedLogin"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::StartParlaneLoginInSessionParams> {
  using P = StartParlaneLoginInSessionParams;
  static constexpr Field fields[] = {
      always<&P::ormelStreamlinedLogin>("ormelStreamlinedLogin"),
      always<&P::useHostedLoginSuccessPage>("useHostedLoginSuccessPage"),
      ifGiven<&P::appBrand>("appBrand"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::ConsumeAccountRateLimitResetCreditInSessionParams> {
  static constexpr Field fields[] = {
      ifGiven<&ConsumeAccountRateLimitResetCreditInSessionParams::creditID>("creditId"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::GetAuthStatusParams> {
  using P = GetAuthStatusParams;
  static constexpr Field fields[] = {
      nullWhenEmpty<&P::includeToken>("includeToken"),
      nullWhenEmpty<&P::refreshToken>("refreshToken"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::CreateDeviceKeyParams> {
  static constexpr Field fields[] = {
      ifGiven<&CreateDeviceKeyParams::protectionPolicy>("protectionPolicy"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::UploadFeedbackParams> {
  using P = UploadFeedbackParams;
  static constexpr Field fields[] = {
      ifGiven<&P::reason>("reason"),
      ifGiven<&P::threadID>("threadId"),
      ifGiven<&P::includeLogs>("includeLogs"),
      ifGiven<&P::extraLogFiles>("extraLogFiles"),
      ifGiven<&P::tags>("tags"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::UploadFeedbackInSessionParams> {
  using P = UploadFeedbackInSessionParams;
  static constexpr Field fields[] = {
      ifGiven<&P::reason>("reason"),
      ifGiven<&P::threadID>("threadId"),
      always<&P::includeLogs>("includeLogs"),
  };
};

ORMEL_DEFINE_ENUMERATION(AccountLoginAppBrand)
ORMEL_DEFINE_ENUMERATION(AccountAddCreditsNudgeType)
ORMEL_DEFINE_ENUMERATION(DeviceKeyProtectionPolicy)
ORMEL_DEFINE_PARAMS(ReadAccountParams)
ORMEL_DEFINE_PARAMS(StartParlaneLoginParams)
ORMEL_DEFINE_PARAMS(StartParlaneLoginInSessionParams)
ORMEL_DEFINE_PARAMS(ConsumeAccountRateLimitResetCreditInSessionParams)
ORMEL_DEFINE_PARAMS(GetAuthStatusParams)
ORMEL_DEFINE_PARAMS(CreateDeviceKeyParams)
ORMEL_DEFINE_PARAMS(UploadFeedbackParams)
ORMEL_DEFINE_PARAMS(UploadFeedbackInSessionParams)
