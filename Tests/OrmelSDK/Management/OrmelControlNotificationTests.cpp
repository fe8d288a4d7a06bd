#include "OrmelSDK/Management/OrmelControlNotification.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "OrmelSDK/Records/AccountRecords.h"

namespace {

using namespace ormel;

OrmelControlNotification notification(const char* method, const char* params) {
  OrmelControlNotification made;
  made.method = method;
  if (params) made.params = JSONValue::decode(params);
  return made;
}

/// The content of a notification about a thread, in words; "nothing" if it has none.
std::string lifecycle(const OrmelControlNotification& told) {
  const auto view = told.threadLifecycleNotification();
  if (!view) return "nothing";
  return visit(
      *view, [](const ThreadArchivedNotification& it) { return "archived " + it.threadID; },
      [](const ThreadDeletedNotification& it) { return "deleted " + it.threadID; },
      [](const ThreadUnarchivedNotification& it) { return "unarchived " + it.threadID; },
      [](const ThreadNameUpdatedNotification& it) { return "named " + it.threadID + " " + it.name; },
      [](const ThreadCompactedNotification& it) { return "compacted " + it.threadID; });
}

TEST(OrmelControlNotification, SaysWhatHappenedToAThread) {
  struct Row {
    const char* method;
    const char* params;
    const char* told;
  };
  constexpr Row rows[] = {
      {"thread/archived", R"({"threadId":"t1","more":1})", "archived t1"},
      {"thread/deleted", R"({"threadId":""})", "deleted "},
      {"thread/compacted", R"({"threadId":"t1"})", "compacted t1"},
      {"thread/unarchived", R"({"thread":{"id":"t1"}})", "unarchived t1"},
      {"thread/name/updated", R"({"threadId":"t1","name":"n"})", "named t1 n"},
      {"thread/name/updated", R"({"threadId":"t1","name":""})", "named t1 "},
      // A notification with a missing member, or one of another type, says nothing.
      {"thread/archived", nullptr, "nothing"},
      {"thread/archived", "null", "nothing"},
      {"thread/archived", "{}", "nothing"},
      {"thread/archived", R"(["t1"])", "nothing"},
      {"thread/archived", R"("t1")", "nothing"},
      {"thread/archived", R"({"threadId":1})", "nothing"},
      {"thread/archived", R"({"thread_id":"t1"})", "nothing"},
      {"thread/archived", R"({"thread":{"id":"t1"}})", "nothing"},
      {"thread/deleted", R"({"threadId":null})", "nothing"},
      {"thread/compacted", R"({})", "nothing"},
      {"thread/unarchived", R"({"threadId":"t1"})", "nothing"},
      {"thread/unarchived", R"({"thread":"t1"})", "nothing"},
      {"thread/unarchived", R"({"thread":{"id":7}})", "nothing"},
      {"thread/unarchived", R"({"thread":{}})", "nothing"},
      {"thread/unarchived", nullptr, "nothing"},
      {"thread/name/updated", R"({"threadId":"t1"})", "nothing"},
      {"thread/name/updated", R"({"name":"n"})", "nothing"},
      {"thread/name/updated", R"({"threadId":"t1","name":null})", "nothing"},
      {"thread/name/updated", R"({"threadId":1,"name":"n"})", "nothing"},
      {"thread/started", R"({"threadId":"t1"})", "nothing"},
      {"Thread/archived", R"({"threadId":"t1"})", "nothing"},
      {"", R"({"threadId":"t1"})", "nothing"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(lifecycle(notification(row.method, row.params)), row.told)
        << row.method << ' ' << (row.params ? row.params : "");
  }
}

TEST(OrmelControlNotification, SaysWhatHappenedToTheAccount) {
  RateLimitSnapshot limits;
  limits.spendControlReached = true;
  struct Row {
    const char* method;
    const char* params;
    std::optional<OrmelAccountControlNotification> told;
  };
  const Row rows[] = {
      {"account/updated",
       R"({"authMode":"apiKey","planType":null,"more":1})",
       {{AccountUpdatedNotification{"apiKey", {}}}}},
      {"account/rateLimits/updated",
       R"({"rateLimits":{"spendControlReached":true}})",
       {{AccountRateLimitsUpdatedNotification{limits}}}},
      {"account/login/completed", R"({"success":true})", {{AccountLoginCompletedNotification{{}, true, {}}}}},
      {"account/updated", nullptr, {}},
      {"account/updated", "null", {}},
      {"account/updated", R"({"authMode":1})", {}},
      {"account/rateLimits/updated", "{}", {}},
      {"account/login/completed", R"({"success":"yes"})", {}},
      {"account/login", R"({"success":true})", {}},
      {"thread/archived", R"({"threadId":"t1"})", {}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(notification(row.method, row.params).accountNotification(), row.told)
        << row.method << ' ' << (row.params ? row.params : "");
  }
}

TEST(OrmelControlNotification, ComparesMethodAndParams) {
  EXPECT_EQ(notification("m", "{\"a\":1}"), notification("m", "{ \"a\": 1.0 }"));
  EXPECT_NE(notification("m", "{}"), notification("n", "{}"));
  EXPECT_NE(notification("m", "null"), notification("m", nullptr));
}

}  // namespace
