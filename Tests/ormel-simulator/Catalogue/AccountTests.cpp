#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "OrmelSDK/Records/AccountRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "Support/TemporaryDirectory.h"
#include "ormel-simulator/Catalogue/CatalogueAgent.h"

namespace ormel::simulator {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

template <typename Notification>
Notification told(const JSONValue& message) {
  return decode<Notification>(anyMember(message, "params"));
}

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string accountType(CatalogueAgent& agent) {
  const auto account = agent.read<AccountReadResponse>("account/read").account;
  return account ? account->type : "";
}

TEST(CatalogueAccount, IsLoggedInToAndOutOf) {
  CatalogueAgent agent;
  const auto before = agent.read<AccountReadResponse>("account/read");
  EXPECT_FALSE(before.account);
  EXPECT_TRUE(before.requiresVelnorAuth);

  const auto login = agent.read<AccountLoginResponse>("account/login/start", R"({"type":"parlane"})");
  EXPECT_EQ(login.type, "parlane");
  ASSERT_TRUE(login.loginID);
  EXPECT_THAT(login.authURL.value_or(""), HasSubstr(*login.loginID));
  const auto completed = told<AccountLoginCompletedNotification>(agent.await("account/login/completed"));
  EXPECT_EQ(completed.loginID, login.loginID);
  EXPECT_TRUE(completed.success);
  EXPECT_FALSE(completed.error);
  const auto updated = told<AccountUpdatedNotification>(agent.await("account/updated"));
  EXPECT_EQ(updated.authMode, "parlane");
  const auto account = agent.read<AccountReadResponse>("account/read").account;
  ASSERT_TRUE(account);
  EXPECT_EQ(account->type, "parlane");
  EXPECT_EQ(account->planType, updated.planType);
  EXPECT_TRUE(account->email);
  EXPECT_EQ(agent.read<AuthStatusResponse>("getAuthStatus").authMethod, "parlane");
  EXPECT_FALSE(agent.read<AuthStatusResponse>("getAuthStatus").authToken);
  EXPECT_TRUE(agent.read<AuthStatusResponse>("getAuthStatus", R"({"includeToken":true})").authToken);

  const int logout = agent.ask("account/logout");
  EXPECT_FALSE(told<AccountUpdatedNotification>(agent.await("account/updated")).authMode);
  EXPECT_EQ(anyMember(agent.awaitAnswer(logout), "result"), JSONValue::object());
  EXPECT_EQ(accountType(agent), "");
  EXPECT_FALSE(agent.read<AuthStatusResponse>("getAuthStatus").authMethod);
}

TEST(CatalogueAccount, CanBeAKeyThatIsNotKept) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(std::vector<std::string>{"ORMEL_SIMULATOR_STATE=" + state.path().string(),
                                                "ORMEL_SIMULATOR_RECORD=" + (state / "record")});
  const auto login = agent.read<AccountLoginResponse>("account/login/start", R"({"type":"apiKey","apiKey":"sesame"})");
  EXPECT_EQ(login.type, "apiKey");
  EXPECT_FALSE(login.loginID);
  const auto completed = told<AccountLoginCompletedNotification>(agent.await("account/login/completed"));
  EXPECT_TRUE(completed.success);
  EXPECT_FALSE(completed.loginID);
  EXPECT_EQ(told<AccountUpdatedNotification>(agent.await("account/updated")).authMode, "apiKey");
  EXPECT_EQ(accountType(agent), "apiKey");
  const auto status = agent.read<AuthStatusResponse>("getAuthStatus", R"({"includeToken":true})");
  EXPECT_EQ(status.authMethod, "apiKey");
  EXPECT_FALSE(status.authToken);
  EXPECT_EQ(agent.finish(), 0);
  EXPECT_THAT(contentOf(state / "record"), HasSubstr("6 bytes"));
  for (const auto& entry : std::filesystem::recursive_directory_iterator(state.path())) {
    EXPECT_THAT(contentOf(entry.path()), Not(HasSubstr("sesame"))) << entry.path();
  }
}

TEST(CatalogueAccount, OutlivesTheProcess) {
  const testing::TemporaryDirectory state;
  // A one-shot client ends the process with the answer, and the pretended user goes on.
  CatalogueAgent(state.path().string()).get("account/login/start", R"({"type":"parlane"})");
  CatalogueAgent second(state.path().string());
  EXPECT_EQ(accountType(second), "parlane");
  second.get("account/logout");
  CatalogueAgent third(state.path().string());
  EXPECT_EQ(accountType(third), "");
}

TEST(CatalogueAccount, StaysAsItIsWhileALoginIsUnderWayOrCancelled) {
  CatalogueAgent agent("", CatalogueAgent::endlessPace);
  agent.get("account/login/start", R"({"type":"apiKey","apiKey":"k"})");
  agent.await("account/updated");
  const auto login = agent.read<AccountLoginResponse>("account/login/start", R"({"type":"parlaneDeviceCode"})");
  EXPECT_TRUE(login.userCode);
  EXPECT_TRUE(login.verificationURL);
  EXPECT_EQ(accountType(agent), "apiKey");
  const JSONObjectBuilder cancel = JSONObjectBuilder().set("loginId", *login.loginID);
  const int request = agent.ask("account/login/cancel", cancel);
  const auto completed = told<AccountLoginCompletedNotification>(agent.await("account/login/completed"));
  EXPECT_EQ(completed.loginID, login.loginID);
  EXPECT_FALSE(completed.success);
  EXPECT_EQ(completed.error, "Login was cancelled");
  EXPECT_EQ(decode<AccountLoginCancelResponse>(anyMember(agent.awaitAnswer(request), "result")).status, "cancelled");
  EXPECT_EQ(decode<AccountLoginCancelResponse>(agent.result("account/login/cancel", cancel)).status, "notFound");
  EXPECT_EQ(accountType(agent), "apiKey");
}

TEST(CatalogueAccount, IsThatOfTheLastLogin) {
  CatalogueAgent agent("", 1);
  const auto first = agent.read<AccountLoginResponse>("account/login/start", R"({"type":"parlane"})");
  const auto second = agent.read<AccountLoginResponse>("account/login/start", R"({"type":"parlane"})");
  const auto completed = told<AccountLoginCompletedNotification>(agent.await("account/login/completed"));
  EXPECT_EQ(completed.loginID, second.loginID);
  EXPECT_NE(first.loginID, second.loginID);
}

TEST(CatalogueAccount, OfParlaneIsNeededForLimitsAndUsage) {
  CatalogueAgent agent;
  const std::vector<std::string> methods = {"account/rateLimits/read", "account/usage/read",
                                            "account/workspaceMessages/read", "account/rateLimitResetCredit/consume",
                                            "account/sendAddCreditsNudgeEmail"};
  const char* const params = R"({"idempotencyKey":"k","creditType":"credits"})";
  for (const std::string& method : methods) {
    EXPECT_EQ(agent.fault(method, params),
              "-32600 " + method + " needs an account; log in by account/login/start first");
  }
  agent.get("account/login/start", R"({"type":"apiKey","apiKey":"k"})");
  for (const std::string& method : methods) {
    EXPECT_EQ(agent.fault(method, params), "-32600 " + method + " needs a Parlane account; an API key is logged in");
  }
  agent.logIn();
  for (const std::string& method : methods) agent.get(method, params);
}

TEST(CatalogueAccount, HasResetCreditsThatCountDownOncePerKey) {
  const testing::TemporaryDirectory state;
  CatalogueAgent agent(state.path().string());
  agent.logIn();
  const auto limits = [&agent] { return agent.read<AccountRateLimitsResponse>("account/rateLimits/read"); };
  const auto consume = [&agent](const std::string& params) {
    return agent.read<AccountRateLimitResetCreditConsumeResponse>("account/rateLimitResetCredit/consume", params)
        .outcome;
  };
  const auto before = limits();
  EXPECT_EQ(before.rateLimitResetCredits->availableCount, 3);
  EXPECT_GT(before.rateLimits.primary->usedPercent, 0);
  EXPECT_EQ(before.rateLimitsByLimitID->at("ormel"), before.rateLimits);

  const int first = agent.ask("account/rateLimitResetCredit/consume",
                              CatalogueAgent::paramsFrom(R"({"idempotencyKey":"a","creditId":"credit-2"})"));
  const auto updated = told<AccountRateLimitsUpdatedNotification>(agent.await("account/rateLimits/updated"));
  EXPECT_EQ(updated.rateLimits.primary->usedPercent, 0);
  EXPECT_EQ(anyMember(agent.awaitAnswer(first), "result"), JSONValue::object({{"outcome", "reset"}}));
  EXPECT_EQ(consume(R"({"idempotencyKey":"a","creditId":"credit-2"})"), "reset");
  EXPECT_EQ(limits().rateLimitResetCredits->availableCount, 2);
  EXPECT_EQ(limits().rateLimitResetCredits->credits->at(1).status, RateLimitResetCreditStatus::redeemed);
  EXPECT_EQ(limits().rateLimits.primary->usedPercent, 0);
  EXPECT_EQ(consume(R"({"idempotencyKey":"b","creditId":"credit-2"})"), "alreadyRedeemed");
  EXPECT_EQ(consume(R"({"idempotencyKey":"c"})"), "reset");
  EXPECT_EQ(consume(R"({"idempotencyKey":"c"})"), "reset");
  EXPECT_EQ(limits().rateLimitResetCredits->availableCount, 1);
  EXPECT_EQ(consume(R"({"idempotencyKey":"d"})"), "reset");
  EXPECT_EQ(limits().rateLimitResetCredits->availableCount, 0);
  EXPECT_EQ(consume(R"({"idempotencyKey":"e"})"), "noCredit");
  CatalogueAgent other(state.path().string());
  EXPECT_EQ(other.read<AccountRateLimitsResponse>("account/rateLimits/read").rateLimitResetCredits->availableCount, 0);
}

TEST(CatalogueAccount, IsRemindedOfCreditsOnceADay) {
  CatalogueAgent agent;
  agent.logIn();
  const auto nudge = [&agent](const char* params) {
    return agent.read<AddCreditsNudgeEmailResponse>("account/sendAddCreditsNudgeEmail", params).status;
  };
  EXPECT_EQ(nudge(R"({"creditType":"credits"})"), "sent");
  EXPECT_EQ(nudge(R"({"creditType":"credits"})"), "cooldownActive");
  EXPECT_EQ(nudge(R"({"creditType":"usage_limit"})"), "sent");
}

TEST(CatalogueAccount, HasUsageOfTheLastSevenDays) {
  CatalogueAgent agent;
  agent.logIn();
  const auto usage = agent.read<AccountTokenUsageResponse>("account/usage/read");
  ASSERT_EQ(usage.dailyUsageBuckets->size(), 7U);
  std::int64_t peak = 0;
  std::string last;
  for (const auto& bucket : *usage.dailyUsageBuckets) {
    EXPECT_LT(last, bucket.startDate);
    EXPECT_THAT(bucket.startDate, ::testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}"));
    last = bucket.startDate;
    peak = std::max(peak, bucket.tokens);
  }
  EXPECT_EQ(usage.summary.peakDailyTokens, peak);
}

TEST(CatalogueAccount, HasDeviceKeysThatAreKept) {
  const testing::TemporaryDirectory state;
  const auto key =
      CatalogueAgent(state.path().string())
          .read<DeviceKeyCreateResponse>("device/key/create",
                                         R"({"accountUserId":"u","clientId":"c","protectionPolicy":"hardware_only"})");
  EXPECT_EQ(key.protectionClass, DeviceKeyProtectionClass::hardwareTPM);
  // 91 bytes, of which the first 26 say that it is a key of this curve.
  EXPECT_EQ(key.publicKeySPKIDERBase64.size(), 124U);
  EXPECT_THAT(key.publicKeySPKIDERBase64, ::testing::StartsWith("MFkwEwYHKoZIzj0CAQYIKoZIzj0DAQcDQgAE"));
  CatalogueAgent agent(state.path().string());
  const auto params = [&key](const JSONValue& payload) {
    return JSONObjectBuilder().set("keyId", key.keyID).set("payload", payload);
  };
  EXPECT_EQ(decode<DeviceKeyCreateResponse>(agent.result("device/key/public", params({}))), key);
  const auto one = decode<DeviceKeySignResponse>(agent.result("device/key/sign", params("light")));
  EXPECT_EQ(one.signedPayloadBase64, "ImxpZ2h0Ig==");
  EXPECT_THAT(one.signatureDERBase64, ::testing::StartsWith("MEQCI"));
  EXPECT_EQ(decode<DeviceKeySignResponse>(agent.result("device/key/sign", params("light"))), one);
  const auto other = decode<DeviceKeySignResponse>(agent.result("device/key/sign", params("dark")));
  EXPECT_NE(other.signatureDERBase64, one.signatureDERBase64);
  const auto soft = agent.read<DeviceKeyCreateResponse>("device/key/create", R"({"accountUserId":"u","clientId":"c"})");
  EXPECT_EQ(soft.protectionClass, DeviceKeyProtectionClass::osProtectedNonextractable);
  EXPECT_NE(soft.publicKeySPKIDERBase64, key.publicKeySPKIDERBase64);
}

}  // namespace
}  // namespace ormel::simulator
