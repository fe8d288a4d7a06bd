#include <gtest/gtest.h>

#include <functional>
#include <stop_token>
#include <string>

#include "OrmelSDK/Records/AccountRecords.h"
#include "Support/CallRows.h"
#include "Support/Eventually.h"
#include "Support/Secret.h"

// The fate of the API key of a sign-in.
namespace {

using namespace ormel;
using namespace ormel::testing;

using Login = std::function<Task<AccountLoginResponse>(const std::string& key)>;

/// The end of a sign-in.
struct LoginRow {
  /// The doings of the server after the handshake.
  const char* scenario;
  std::size_t keyLength;
  bool isCancelled;
  const char* ofCall;
  const char* ofSession;
};

const LoginRow loginRows[] = {
    {"always answer account/login/start with {\"type\":\"apiKey\"}", 5'000, false, "no failure", "no failure"},
    {"always answer account/login/start with error {\"code\":-5,\"message\":\"bad key\"}", 5'000, false,
     "other error: App-server error -5: bad key", "other error: App-server error -5: bad key"},
    {"client asks account/login/start\nserver exits 1", 5'000, false,
     "stream error: App-server RPC account/login/start failed: Ormel app-server terminated unexpectedly",
     "stream error: Ormel app-server terminated unexpectedly"},
    // More than fits into the pipe, so that the request is still queued when the call is given up.
    {"server stops reading\nwait until killed", 500'000, true,
     "stream error: App-server RPC account/login/start was cancelled", "cancelled"},
};

/// Signs in with a key of which nothing is left once the call has ended, while its object and its server live on.
void expectNoCopyOfTheKey(const LoginRow& row, const SimulatorScenario& scenario, const Login& login,
                          const std::string& failure) {
  const Secret secret(row.keyLength);
  std::string key = secret.text();
  EXPECT_GE(secret.piecesInMemory(), 3U) << "the search does not find the key that is there";
  std::stop_source stop;
  const auto outcome = startOn(productionScheduler(), login(key), stop.get_token());
  wipe(key);
  if (row.isCancelled) {
    ASSERT_TRUE(scenario.waitForMethod("initialized"));
    stop.request_stop();
  }
  outcome->waitUntilSet();
  EXPECT_EQ(failureOf([&] { outcome->take(); }), failure);
  EXPECT_TRUE(eventually([&] { return secret.piecesInMemory() == 0; })) << "a copy is kept";
}

TEST(SecretKey, IsNotKeptAfterASignIn) {
  overwriteFreedMemory();
  for (const LoginRow& row : loginRows) {
    SCOPED_TRACE(row.scenario);
    const SimulatorScenario scenario("client asks initialize\nserver answers {}\nclient notifies initialized\n" +
                                     std::string(row.scenario));
    const Ormel ormel = ormelPlaying(scenario);
    expectNoCopyOfTheKey(row, scenario, [&](const std::string& key) { return ormel.loginWithAPIKey(key); }, row.ofCall);
  }
}

TEST(SecretKey, IsNotKeptByASessionThatGoesOn) {
  overwriteFreedMemory();
  for (const LoginRow& row : loginRows) {
    SCOPED_TRACE(row.scenario);
    const SimulatorScenario scenario("client asks initialize\nserver answers {}\nclient notifies initialized\n" +
                                     std::string(row.scenario));
    const auto session = ormelPlaying(scenario).makeControlSession();
    expectNoCopyOfTheKey(
        row, scenario, [&](const std::string& key) { return session.loginWithAPIKey(key); }, row.ofSession);
    session.close().get();
  }
}

}  // namespace
