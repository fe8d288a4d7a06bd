// Signs in with a code that the user enters on any device, shows the rate limits, and signs out.
// Usage: 12-accounts [SERVER]

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/Records/AccountRecords.h>

#include <iostream>

namespace {

/// Whether the sign-in succeeds. Its end is told by a notification.
ormel::Task<bool> hasSignedIn(ormel::OrmelControlSession session) {
  // Subscribed before the sign-in starts, so that its end is not missed.
  auto notifications = co_await session.notifications();

  const ormel::AccountLoginResponse login = co_await session.startParlaneDeviceCodeLogin();
  std::cout << "Enter " << login.userCode.value_or("the code") << " at " << login.verificationURL.value_or("?") << '\n';

  while (auto notification = co_await notifications.next()) {
    const auto news = notification->accountNotification();
    if (!news) continue;
    const auto* end = std::get_if<ormel::AccountLoginCompletedNotification>(&news->value);
    if (end && end->loginID == login.loginID) co_return end->success;
  }
  co_return false;
}

ormel::Task<void> showAccount(ormel::OrmelControlSession session) {
  const ormel::AccountReadResponse state = co_await session.readAccount();
  if (state.account) std::cout << "Signed in as " << state.account->email.value_or("somebody") << '\n';

  const ormel::AccountRateLimitsResponse limits = co_await session.readAccountRateLimits();
  if (limits.rateLimits.primary) std::cout << limits.rateLimits.primary->usedPercent << "% of the limit is used\n";
}

ormel::Task<void> visitAccount(ormel::OrmelControlSession session) {
  if (co_await hasSignedIn(session)) co_await showAccount(session);
  co_await session.logoutAccount();
  const ormel::AccountReadResponse state = co_await session.readAccount();
  std::cout << (state.account ? "Still signed in\n" : "Signed out\n");
  co_await session.close();
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];

  visitAccount(ormel::Ormel(options).makeControlSession()).get();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
