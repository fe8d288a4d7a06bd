#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <string_view>

#include "OrmelSDK/AppServerRun/Framing/AppServerRPCError.h"
#include "OrmelSDK/AppServerRun/Payloads/AppServerInitializeCapabilities.h"
#include "OrmelSDK/Management/OrmelControlNotification.h"
#include "OrmelSDK/Management/StableCapabilityManifest.h"
#include "OrmelSDK/Records/AccountRecords.h"
#include "Support/AskedRun.h"
#include "Support/NotifiedRun.h"
#include "Support/SimulatedSession.h"

// Whether the library does what the manifest says it does.
namespace {

using namespace ormel;
using namespace ormel::testing;
using ::testing::Contains;
using ::testing::Not;
using ::testing::SizeIs;

using Names = std::set<std::string, std::less<>>;

/// Subscribers of a session hear these as they come: each only says that something has to be asked for again.
constexpr std::string_view relayedOnly[] = {"app/list/updated", "skills/changed", "mcpServer/oauthLogin/completed",
                                            "mcpServer/startupStatus/updated"};

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Hands over what follows each match of the expression in the library's sources whose names end so.
template <typename Use>
void forEachMatch(const std::string& expression, std::string_view nameEnd, Use use) {
  const std::regex pattern(expression);
  for (const auto& file : std::filesystem::recursive_directory_iterator(ORMEL_PROJECT_SOURCE "/Sources/OrmelSDK")) {
    if (!file.path().filename().string().ends_with(nameEnd)) continue;
    const std::string text = contentsOf(file.path());
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) use(*match);
  }
}

/// The methods of the calls as they are declared, by the names of the calls.
const std::map<std::string, Names>& declaredCalls() {
  static const auto calls = [] {
    std::map<std::string, Names> declared;
    std::string name;
    forEachMatch(R"re(\n(?:Dropped|Notification)?Call(?:<\w+>)? (\w+)\(|return \{+"([^"]+)")re", "Calls.cpp",
                 [&](const std::smatch& match) {
                   if (match[1].matched) {
                     name = match[1];
                   } else {
                     declared[name].insert(match[2]);
                   }
                 });
    return declared;
  }();
  return calls;
}

/// The calls that an operation performs.
const Names& performedCalls() {
  static const auto calls = [] {
    Names performed;
    forEachMatch(R"(\bcalls::(\w+)\b)", ".cpp", [&](const std::smatch& match) { performed.insert(match[1]); });
    return performed;
  }();
  return calls;
}

Names methodsOfTheHandshake() {
  Names methods;
  withSessions([&](SimulatedServer& server, SimulatedSession& session) {
    server.answer("a/b", "1");
    session.ended();
    for (const auto& method : server.methods()) methods.insert(method);
  });
  methods.erase("a/b");
  return methods;
}

const Names& sentMethods() {
  static const auto methods = [] {
    Names sent = methodsOfTheHandshake();
    for (const auto& [name, methodsOfCall] : declaredCalls()) {
      if (performedCalls().contains(name)) sent.insert(methodsOfCall.begin(), methodsOfCall.end());
    }
    return sent;
  }();
  return methods;
}

/// Whether a turn answers the request otherwise than as one that it does not know.
bool isAnswered(std::string_view method) {
  SimulatedScheduler scheduler(1);
  AskedRun asked(scheduler);
  asked.ask(method, R"({"threadId":"t1","turnId":"u1","itemId":"i1"})");
  const auto answers = asked.answers();
  return std::ranges::none_of(answers, [](const JSONValue& answer) {
    const JSONValue* error = answer.find("error");
    return error && *error->find("code") == JSONValue(AppServerRPCError::methodNotFoundCode);
  });
}

/// The params that notifications of the manifest need. The id of "serverRequest/resolved" is left out: it shows by its
/// failure.
constexpr std::string_view anyParams =
    R"({"threadId":"t1","turnId":"u1","thread":{"id":"t1"},"name":"n","success":true,"rateLimits":{},)"
    R"("provider":"p","message":"m","summary":"s","startedAtMs":1})";

/// Whether a turn tells something of the notification, or a control session's subscriber can read a record in it.
bool isUnderstood(std::string_view method) {
  OrmelControlNotification notification;
  notification.method = std::string(method);
  notification.params = JSONValue::decode(anyParams);
  return notification.accountNotification() || notification.threadLifecycleNotification() ||
         !wordsUpToTheEndOf({line(method, anyParams)}).empty();
}

TEST(CapabilityCoverage, IsSentOrUnderstoodForEachMethodThatTheManifestSaysIsImplemented) {
  for (const auto& entry : OrmelStableCapabilityManifest::entries()) {
    if (entry.sdkStatus != OrmelCapabilityStatus::implemented) continue;
    if (std::ranges::find(relayedOnly, entry.method) != std::end(relayedOnly)) continue;
    EXPECT_TRUE(sentMethods().contains(entry.method) || isAnswered(entry.method) || isUnderstood(entry.method))
        << entry.method;
  }
}

TEST(CapabilityCoverage, IsSentForTheMethodsThatAreKeptForCompatibility) {
  for (const auto& entry : OrmelStableCapabilityManifest::entries()) {
    if (entry.sdkStatus != OrmelCapabilityStatus::compatibilityOnly) continue;
    EXPECT_THAT(sentMethods(), Contains(entry.method));
  }
}

TEST(CapabilityCoverage, IsHeardBySubscribersForTheRest) {
  const auto optedOut = AppServerInitializeCapabilities::forManagement().optOutNotificationMethods;
  for (const auto method : relayedOnly) {
    EXPECT_EQ(OrmelStableCapabilityManifest::entry(method)->sdkStatus, OrmelCapabilityStatus::implemented);
    EXPECT_THAT(*optedOut, Not(Contains(method)));
    EXPECT_FALSE(sentMethods().contains(method) || isAnswered(method) || isUnderstood(method)) << method;
    withSessions([&](SimulatedServer& server, SimulatedSession& session) {
      server.answer("a/b", "1");
      session.ended();
      const auto heard = session.listen();
      server.notify(method);
      EXPECT_THAT(*heard, Contains(method));
    });
  }
}

TEST(CapabilityCoverage, IsSeenOnlyWhereItIs) {
  for (const char* foreign : {"app/lists", "thread/rollback", "Initialize"}) {
    EXPECT_FALSE(sentMethods().contains(foreign) || isAnswered(foreign) || isUnderstood(foreign)) << foreign;
  }
  EXPECT_THAT(sentMethods(), SizeIs(::testing::Ge(90U)));
}

TEST(ManagementCalls, AreAllPerformedByAnOperation) {
  for (const auto& [name, methods] : declaredCalls()) EXPECT_THAT(performedCalls(), Contains(name));
}

}  // namespace
