#include "OrmelSDK/AppServerRun/TurnRun/AppServerMessage.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>

#include "OrmelSDK/Base/ThreadRunError.h"
#include "Support/PayloadChecks.h"

namespace {

using namespace ormel;
using namespace ormel::detail;
using tests::json;

template <typename Message>
Message classifiedAs(std::string_view line) {
  return std::get<Message>(classifiedAppServerMessage(json(line)).value);
}

std::string refusal(std::string_view line) {
  try {
    classifiedAppServerMessage(json(line));
  } catch (const ThreadRunError& error) {
    EXPECT_EQ(error.kind(), ThreadRunError::Kind::streamError);
    return error.what();
  }
  return "accepted";
}

TEST(AppServerMessage, IsARequestWithAMethodAndAnID) {
  const auto numbered = classifiedAs<ServerRequestMessage>(R"({"id":7,"method":"a","params":{}})");
  EXPECT_EQ(numbered.method, "a");
  EXPECT_EQ(numbered.payload, json(R"({"id":7,"method":"a","params":{}})"));
  EXPECT_EQ(classifiedAs<ServerRequestMessage>(R"({"id":"q","method":"a"})").method, "a");
}

TEST(AppServerMessage, IsANotificationWithAMethodAlone) {
  const auto plain = classifiedAs<ServerNotificationMessage>(R"({"method":"a"})");
  EXPECT_EQ(plain.method, "a");
  EXPECT_EQ(plain.payload, json(R"({"method":"a"})"));
  EXPECT_EQ(classifiedAs<ServerNotificationMessage>(R"({"type":"error","method":"a","error":"x"})").method, "a");
  EXPECT_EQ(classifiedAs<ServerNotificationMessage>(R"({"method":"a","result":1,"error":2})").method, "a");
}

TEST(AppServerMessage, IsAResponseWithAResultOfAnyType) {
  for (const char* result : {"null", "1", "\"a\"", "[]", R"({"error":"inner"})"}) {
    const auto response = classifiedAs<ResponseMessage>(std::string(R"({"id":1,"result":)") + result + "}");
    EXPECT_EQ(response.id, AppServerRequestID::integer(1));
    EXPECT_EQ(response.result, json(result));
  }
}

TEST(AppServerMessage, IsARefusalWithAnErrorObject) {
  EXPECT_EQ(classifiedAs<ErrorResponseMessage>(R"({"id":"a","error":{"message":"no"}})").message, "no");
  EXPECT_EQ(classifiedAs<ErrorResponseMessage>(R"({"id":"a","error":{"message":""}})").message, "");
  EXPECT_EQ(classifiedAs<ErrorResponseMessage>(R"({"id":"a","error":{"message":7}})").message,
            "Unknown app-server error");
  EXPECT_EQ(classifiedAs<ErrorResponseMessage>(R"({"id":"a","error":{}})").message, "Unknown app-server error");
  EXPECT_EQ(classifiedAs<ErrorResponseMessage>(R"({"id":"a","error":{}})").id, AppServerRequestID::string("a"));
}

TEST(AppServerMessage, IsNothingElse) {
  const std::string noObject = "Unexpected non-object JSON from app-server";
  for (const char* line : {"null", "true", "1", "\"{}\"", "[{}]"}) EXPECT_EQ(refusal(line), noObject) << line;

  const std::string unknown = "Unexpected app-server protocol object";
  for (const char* line : {"{}", R"({"a":1})", R"({"result":1})", R"({"id":null,"result":1})", R"({"id":true})",
                           R"({"id":{},"error":{}})", R"({"id":1.5,"result":1})", R"({"type":"warning"})"}) {
    EXPECT_EQ(refusal(line), unknown) << line;
  }

  const std::string badMethod = "Invalid app-server JSON-RPC method";
  for (const char* line : {R"({"method":""})", R"({"method":"","id":1})", R"({"method":null})",
                           R"({"method":1,"id":1})", R"({"method":[],"type":"error"})"}) {
    EXPECT_EQ(refusal(line), badMethod) << line;
  }

  const std::string badID = "Invalid app-server JSON-RPC request id";
  for (const char* line :
       {R"({"method":"a","id":null})", R"({"method":"a","id":false})", R"({"method":"a","id":{}})"}) {
    EXPECT_EQ(refusal(line), badID) << line;
  }

  const std::string badResponse = "Invalid app-server JSON-RPC response";
  for (const char* line : {R"({"id":1})", R"({"id":1,"result":1,"error":{}})", R"({"id":1,"error":"a"})",
                           R"({"id":1,"error":null})", R"({"id":1,"result":null,"error":null})"}) {
    EXPECT_EQ(refusal(line), badResponse) << line;
  }
}

TEST(AppServerMessage, TellsABareErrorByTheBestMessageThatThereIs) {
  EXPECT_EQ(refusal(R"({"type":"error","error":{"message":"a"},"message":"b"})"), "a");
  EXPECT_EQ(refusal(R"({"type":"error","error":{"message":1},"message":"b"})"), "b");
  EXPECT_EQ(refusal(R"({"type":"error","error":"c","message":"b"})"), "c");
  EXPECT_EQ(refusal(R"({"type":"error","message":"b","id":1,"result":1})"), "b");
  EXPECT_EQ(refusal(R"({"type":"error","error":7})"), "Unknown app-server error");
  EXPECT_EQ(refusal(R"({"type":"error"})"), "Unknown app-server error");
}

}  // namespace
