#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Management/AccountParams.h"
#include "OrmelSDK/Records/AccountRecords.h"
#include "OrmelSDK/Records/DeviceRecords.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "Support/CallRows.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

constexpr const char* aLogin = R"({"type":"parlane"})";
constexpr const char* aConsumption = R"({"outcome":"reset"})";
constexpr const char* aDeviceKey = R"({"keyId":"k","publicKeySpkiDerBase64":"MFk=","algorithm":"ecdsa_p256_sha256",)"
                                   R"("protectionClass":"hardware_tpm"})";
constexpr const char* aSignature = R"({"signatureDerBase64":"MEU=","signedPayloadBase64":"e30=",)"
                                   R"("algorithm":"ecdsa_p256_sha256"})";
constexpr const char* anUpload = R"({"threadId":"t1"})";

const ReplyRecords accountRecords = {
    {"account/read", "AccountReadResponse"},
    {"account/login/start", "AccountLoginResponse"},
    {"account/login/cancel", "AccountLoginCancelResponse"},
    {"account/logout", "EmptyRPCResponse"},
    {"account/rateLimits/read", "AccountRateLimitsResponse"},
    {"account/rateLimitResetCredit/consume", "AccountRateLimitResetCreditConsumeResponse"},
    {"account/usage/read", "AccountTokenUsageResponse"},
    {"account/workspaceMessages/read", "WorkspaceMessagesResponse"},
    {"account/sendAddCreditsNudgeEmail", "AddCreditsNudgeEmailResponse"},
    {"getAuthStatus", "AuthStatusResponse"},
    {"device/key/create", "DeviceKeyCreateResponse"},
    {"device/key/public", "DeviceKeyCreateResponse"},
    {"device/key/sign", "DeviceKeySignResponse"},
    {"feedback/upload", "FeedbackUploadResponse"},
};

const CallRow accountRows[] = {
    onBoth(R"({"id":2,"method":"account/read","params":{"refreshToken":false}})", R"({"requiresVelnorAuth":false})",
           [](const auto& object) { return object.readAccount(); }),
    onBoth(R"({"id":2,"method":"account/read","params":{"refreshToken":true}})",
           R"({"account":{"type":"parlane","email":"a@b.c","planType":"pro","credentialSource":{"kind":["file",1]}},)"
           R"("requiresVelnorAuth":true})",
           [](const auto& object) {
             ReadAccountParams params;
             params.refreshToken = true;
             return object.readAccount(params);
           }),
    onBoth(R"({"id":2,"method":"account/read","params":{"refreshToken":false}})",
           R"({"account":null,"requiresVelnorAuth":true})", R"({"requiresVelnorAuth":true})",
           [](const auto& object) { return object.readAccount(ReadAccountParams()); }),

    onOrmel(R"({"id":2,"method":"account/login/start","params":{"type":"parlane"}})", aLogin,
            [](const Ormel& ormel) { return ormel.startParlaneLogin(); }),
    onOrmel(R"({"id":2,"method":"account/login/start","params":{"type":"parlane","ormelStreamlinedLogin":true}})",
            R"({"type":"parlane","loginId":"l","authUrl":"https://a","verificationUrl":"https://v","userCode":"U-1"})",
            [](const Ormel& ormel) {
              StartParlaneLoginParams params;
              params.ormelStreamlinedLogin = true;
              return ormel.startParlaneLogin(params);
            }),
    onOrmel(R"({"id":2,"method":"account/login/start","params":{"type":"parlane","ormelStreamlinedLogin":false}})",
            aLogin,
            [](const Ormel& ormel) {
              StartParlaneLoginParams params;
              params.ormelStreamlinedLogin = false;
              return ormel.startParlaneLogin(params);
            }),
    onSession(R"({"id":2,"method":"account/login/start","params":{"type":"parlane","ormelStreamlinedLogin":false,)"
              R"("useHostedLoginSuccessPage":false}})",
              aLogin, [](const OrmelControlSession& session) { return session.startParlaneLogin(); }),
    onSession(R"({"id":2,"method":"account/login/start","params":{"type":"parlane","ormelStreamlinedLogin":true,)"
              R"("useHostedLoginSuccessPage":false,"appBrand":"ormel"}})",
              R"({"type":"parlane","loginId":"l","authUrl":"https://a"})",
              [](const OrmelControlSession& session) {
                StartParlaneLoginInSessionParams params;
                params.ormelStreamlinedLogin = true;
                params.appBrand = AccountLoginAppBrand::ormel;
                return session.startParlaneLogin(params);
              }),
    onSession(R"({"id":2,"method":"account/login/start","params":{"type":"parlane","ormelStreamlinedLogin":false,)"
              R"("useHostedLoginSuccessPage":true,"appBrand":"parlane"}})",
              aLogin,
              [](const OrmelControlSession& session) {
                StartParlaneLoginInSessionParams params;
                params.useHostedLoginSuccessPage = true;
                params.appBrand = AccountLoginAppBrand::parlane;
                return session.startParlaneLogin(params);
              }),
    onSession(R"({"id":2,"method":"account/login/start","params":{"type":"parlaneDeviceCode"}})",
              R"({"type":"parlaneDeviceCode","loginId":"l","verificationUrl":"https://v","userCode":"U-1"})",
              [](const OrmelControlSession& session) { return session.startParlaneDeviceCodeLogin(); }),
    onBoth(R"({"id":2,"method":"account/login/start","params":{"type":"apiKey","apiKey":" sk-\"1\"\n"}})",
           R"({"type":"apiKey"})", [](const auto& object) { return object.loginWithAPIKey(" sk-\"1\"\n"); }),
    onBoth(R"({"id":2,"method":"account/login/start","params":{"type":"apiKey","apiKey":""}})", R"({"type":"apiKey"})",
           [](const auto& object) { return object.loginWithAPIKey(""); }),
    onBoth(R"({"id":2,"method":"account/login/cancel","params":{"loginId":"l"}})", R"({"status":"canceled"})",
           [](const auto& object) { return object.cancelAccountLogin("l"); }),
    onBoth(R"({"id":2,"method":"account/logout"})", R"({"more":1})", "null",
           [](const auto& object) { return object.logoutAccount(); }),

    onBoth(R"({"id":2,"method":"account/rateLimits/read"})", R"({"rateLimits":{}})",
           [](const auto& object) { return object.readAccountRateLimits(); }),
    onBoth(
        R"({"id":2,"method":"account/rateLimits/read"})",
        R"({"rateLimits":{"limitId":"main","limitName":"Main","primary":{"usedPercent":12.5,"windowDurationMins":300,)"
        R"("resetsAt":1700000000.5},"secondary":{"usedPercent":100},"credits":{"hasCredits":true,"unlimited":false,)"
        R"("balance":"9.99"},"individualLimit":{"limit":"20","used":"5","remainingPercent":75,"resetsAt":1700000001},)"
        R"("spendControlReached":false,"planType":"pro","rateLimitReachedType":"primary"},)"
        R"("rateLimitsByLimitId":{"main":{"limitId":"main"},"other":{}},)"
        R"("rateLimitResetCredits":{"availableCount":2,"credits":[{"id":"c1","resetType":"ormelRateLimits",)"
        R"("status":"available","grantedAt":1700000000,"expiresAt":1800000000,"title":"T","description":"D"},)"
        R"({"id":"c2","resetType":"future","status":"lost","grantedAt":0}]}})",
        [](const auto& object) { return object.readAccountRateLimits(); }),
    onOrmel(R"({"id":2,"method":"account/rateLimitResetCredit/consume","params":{"idempotencyKey":"i"}})", aConsumption,
            [](const Ormel& ormel) { return ormel.consumeAccountRateLimitResetCredit("i"); }),
    onSession(R"({"id":2,"method":"account/rateLimitResetCredit/consume","params":{"idempotencyKey":"i"}})",
              aConsumption,
              [](const OrmelControlSession& session) { return session.consumeAccountRateLimitResetCredit("i"); }),
    onSession(R"({"id":2,"method":"account/rateLimitResetCredit/consume","params":{"idempotencyKey":"i",)"
              R"("creditId":"c1"}})",
              aConsumption,
              [](const OrmelControlSession& session) {
                ConsumeAccountRateLimitResetCreditInSessionParams params;
                params.creditID = "c1";
                return session.consumeAccountRateLimitResetCredit("i", params);
              }),
    onBoth(R"({"id":2,"method":"account/usage/read"})", R"({"summary":{}})",
           [](const auto& object) { return object.readAccountUsage(); }),
    onBoth(R"({"id":2,"method":"account/usage/read"})",
           R"({"summary":{"lifetimeTokens":9000000000,"peakDailyTokens":5,"longestRunningTurnSec":60,)"
           R"("currentStreakDays":2,"longestStreakDays":3},"dailyUsageBuckets":[{"startDate":"2026-01-02","tokens":7},)"
           R"({"startDate":"2026-01-03","tokens":0}]})",
           [](const auto& object) { return object.readAccountUsage(); }),
    onBoth(R"({"id":2,"method":"account/workspaceMessages/read"})", R"({"featureEnabled":false,"messages":[]})",
           [](const auto& object) { return object.readWorkspaceMessages(); }),
    onBoth(R"({"id":2,"method":"account/workspaceMessages/read"})",
           R"({"featureEnabled":true,"messages":[{"messageId":"m1","messageType":"headline","messageBody":"b",)"
           R"("createdAt":1.5,"archivedAt":2},{"messageId":"m2","messageType":"announcement","messageBody":""},)"
           R"({"messageId":"m3","messageType":"some_Day","messageBody":"c"}]})",
           [](const auto& object) { return object.readWorkspaceMessages(); }),

    onOrmel(R"({"id":2,"method":"account/sendAddCreditsNudgeEmail","params":{"creditType":"no such type"}})",
            R"({"status":"sent"})", [](const Ormel& ormel) { return ormel.sendAddCreditsNudgeEmail("no such type"); }),
    onSession(R"({"id":2,"method":"account/sendAddCreditsNudgeEmail","params":{"creditType":"credits"}})",
              R"({"status":"sent"})",
              [](const OrmelControlSession& session) {
                return session.sendAddCreditsNudgeEmail(AccountAddCreditsNudgeType::credits);
              }),
    onSession(R"({"id":2,"method":"account/sendAddCreditsNudgeEmail","params":{"creditType":"usage_limit"}})",
              R"({"status":"cooldown_active"})",
              [](const OrmelControlSession& session) {
                return session.sendAddCreditsNudgeEmail(AccountAddCreditsNudgeType::usageLimit);
              }),
    onOrmel(R"({"id":2,"method":"getAuthStatus","params":{"includeToken":null,"refreshToken":null}})", "{}",
            [](const Ormel& ormel) { return ormel.getAuthStatus(); }),
    onOrmel(R"({"id":2,"method":"getAuthStatus","params":{"includeToken":true,"refreshToken":false}})",
            R"({"authMethod":"parlane","authToken":"secret","requiresVelnorAuth":true})",
            [](const Ormel& ormel) {
              GetAuthStatusParams params;
              params.includeToken = true;
              params.refreshToken = false;
              return ormel.getAuthStatus(params);
            }),
    onOrmel(R"({"id":2,"method":"getAuthStatus","params":{"includeToken":null,"refreshToken":true}})",
            R"({"authMethod":null,"authToken":null,"requiresVelnorAuth":null})", "{}",
            [](const Ormel& ormel) {
              GetAuthStatusParams params;
              params.refreshToken = true;
              return ormel.getAuthStatus(params);
            }),

    onOrmel(R"({"id":2,"method":"device/key/create","params":{"accountUserId":"u","clientId":"c"}})", aDeviceKey,
            [](const Ormel& ormel) { return ormel.createDeviceKey("u", "c"); }),
    onOrmel(R"({"id":2,"method":"device/key/create","params":{"accountUserId":"u","clientId":"c",)"
            R"("protectionPolicy":"hardware_only"}})",
            R"({"keyId":"k","publicKeySpkiDerBase64":"","algorithm":"ecdsa_p256_sha256",)"
            R"("protectionClass":"hardware_secure_enclave"})",
            [](const Ormel& ormel) {
              CreateDeviceKeyParams params;
              params.protectionPolicy = DeviceKeyProtectionPolicy::hardwareOnly;
              return ormel.createDeviceKey("u", "c", params);
            }),
    onOrmel(R"({"id":2,"method":"device/key/create","params":{"accountUserId":"","clientId":"",)"
            R"("protectionPolicy":"allow_os_protected_nonextractable"}})",
            R"({"keyId":"k","publicKeySpkiDerBase64":"","algorithm":"ecdsa_p256_sha256",)"
            R"("protectionClass":"os_protected_nonextractable"})",
            [](const Ormel& ormel) {
              CreateDeviceKeyParams params;
              params.protectionPolicy = DeviceKeyProtectionPolicy::allowOSProtectedNonextractable;
              return ormel.createDeviceKey("", "", params);
            }),
    onOrmel(R"({"id":2,"method":"device/key/public","params":{"keyId":"k"}})", aDeviceKey,
            [](const Ormel& ormel) { return ormel.readDeviceKeyPublic("k"); }),
    onOrmel(R"({"id":2,"method":"device/key/sign","params":{"keyId":"k","payload":{"a":[1,null]}}})", aSignature,
            [](const Ormel& ormel) {
              return ormel.signDeviceKey("k", JSONValue::object({{"a", JSONValue::array({1, nullptr})}}));
            }),
    onOrmel(R"({"id":2,"method":"device/key/sign","params":{"keyId":"k","payload":null}})", aSignature,
            [](const Ormel& ormel) { return ormel.signDeviceKey("k", JSONValue()); }),

    onOrmel(R"({"id":2,"method":"feedback/upload","params":{"classification":"bug"}})", anUpload,
            [](const Ormel& ormel) { return ormel.uploadFeedback("bug"); }),
    onOrmel(R"({"id":2,"method":"feedback/upload","params":{"classification":"bug","reason":"r","threadId":"t1",)"
            R"("includeLogs":true,"extraLogFiles":["/a","/b"],"tags":{"k":"v","l":""}}})",
            anUpload,
            [](const Ormel& ormel) {
              UploadFeedbackParams params;
              params.reason = "r";
              params.threadID = "t1";
              params.includeLogs = true;
              params.extraLogFiles = {"/a", "/b"};
              params.tags.emplace();
              params.tags->emplace("k", "v");
              params.tags->emplace("l", "");
              return ormel.uploadFeedback("bug", params);
            }),
    onOrmel(R"({"id":2,"method":"feedback/upload","params":{"classification":"","reason":"","threadId":"",)"
            R"("includeLogs":false,"extraLogFiles":[],"tags":{}}})",
            anUpload,
            [](const Ormel& ormel) {
              UploadFeedbackParams params;
              params.reason = "";
              params.threadID = "";
              params.includeLogs = false;
              params.extraLogFiles.emplace();
              params.tags.emplace();
              return ormel.uploadFeedback("", params);
            }),
    onSession(R"({"id":2,"method":"feedback/upload","params":{"classification":"bug","includeLogs":false}})", anUpload,
              [](const OrmelControlSession& session) { return session.uploadFeedback("bug"); }),
    onSession(R"({"id":2,"method":"feedback/upload","params":{"classification":"bug","reason":"r","threadId":"t1",)"
              R"("includeLogs":true}})",
              anUpload,
              [](const OrmelControlSession& session) {
                UploadFeedbackInSessionParams params;
                params.reason = "r";
                params.threadID = "t1";
                params.includeLogs = true;
                return session.uploadFeedback("bug", params);
              }),
};

TEST(AccountCalls, GoOutExactly) { expectCalls(accountRows); }

TEST(AccountCalls, FailByTheirRecordAndByTheServersError) { expectFailures(accountRows, accountRecords); }

}  // namespace
