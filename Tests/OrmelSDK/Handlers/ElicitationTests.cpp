#include "OrmelSDK/Handlers/Elicitation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Handlers/ParlaneAuthTokens.h"
#include "Support/CodingChecks.h"

namespace {

using namespace ormel;
using tests::printed;

TEST(Elicitation, TellsItsModesApart) {
  const std::vector<McpServerElicitationMode> modes{McpServerElicitationMode::form("m", JSONValue(1)),
                                                    McpServerElicitationMode::velnorForm("m", JSONValue(1)),
                                                    McpServerElicitationMode::url("m", "u", "e", JSONValue(2))};
  std::string seen;
  for (const auto& mode : modes) {
    seen += visit(
        mode, [](const McpServerFormElicitation&) { return "form "; },
        [](const McpServerVelnorFormElicitation&) { return "velnorForm "; },
        [](const McpServerURLElicitation& page) { return page.url == "u" ? "url " : ""; });
  }
  EXPECT_EQ(seen, "form velnorForm url ");
  EXPECT_NE(modes[0], modes[1]);
  EXPECT_EQ(modes[0], McpServerElicitationMode::form("m", JSONValue(1)));
  EXPECT_NE(modes[0], McpServerElicitationMode::form("m", JSONValue(1), JSONValue()));
}

TEST(Elicitation, ServesBothFormsByOneFunction) {
  const auto messageOf = [](const McpServerElicitationMode& mode) {
    return visit(
        mode, [](const McpServerElicitationForm& form) { return form.message; },
        [](const McpServerURLElicitation& page) { return page.message; });
  };
  EXPECT_EQ(messageOf(McpServerElicitationMode::form("a", JSONValue())), "a");
  EXPECT_EQ(messageOf(McpServerElicitationMode::velnorForm("b", JSONValue())), "b");
  EXPECT_EQ(messageOf(McpServerElicitationMode::url("c", "u", "e")), "c");
}

TEST(Elicitation, IsCancelledUnlessTheApplicationSaysOtherwise) {
  EXPECT_EQ(McpServerElicitationResponse().action, McpServerElicitationAction::cancel);
  EXPECT_EQ(McpServerElicitationResponse().content, std::nullopt);
  EXPECT_EQ(McpServerElicitationResponse().metadata, std::nullopt);
}

TEST(Elicitation, ComparesByValueAndPrintsOnOneLine) {
  McpServerElicitationRequest request{"t", std::nullopt, "s", McpServerElicitationMode::url("m", "u", "e")};
  McpServerElicitationRequest other = request;
  EXPECT_EQ(request, other);
  other.turnID = "turn";
  EXPECT_NE(request, other);
  EXPECT_EQ(
      printed(request),
      R"(McpServerElicitationRequest {"threadID":"t","serverName":"s","mode":{"type":"url","message":"m","url":"u","elicitationID":"e"}})");
  EXPECT_EQ(printed(McpServerElicitationMode::velnorForm("m", JSONValue(), JSONValue(1))),
            R"(McpServerElicitationMode {"type":"velnorForm","message":"m","requestedSchema":null,"metadata":1})");
  EXPECT_EQ(printed(McpServerElicitationResponse{McpServerElicitationAction::accept, JSONValue(1), {}}),
            R"(McpServerElicitationResponse {"action":"accept","content":1})");
}

TEST(ParlaneAuthTokens, PrintTheRequestWhole) {
  EXPECT_EQ(printed(ParlaneAuthTokensRefreshRequest{{}, "a"}),
            R"(ParlaneAuthTokensRefreshRequest {"reason":"unauthorized","previousAccountID":"a"})");
  EXPECT_NE((ParlaneAuthTokensRefreshRequest{{}, "a"}), ParlaneAuthTokensRefreshRequest());
}

TEST(ParlaneAuthTokens, NeverPrintTheAccessToken) {
  const ParlaneAuthTokensRefreshResponse response{"top-secret-token", "account", "pro"};
  EXPECT_EQ(
      printed(response),
      R"(ParlaneAuthTokensRefreshResponse {"accessToken":"<secret>","parlaneAccountID":"account","parlanePlanType":"pro"})");
  EXPECT_EQ(printed(ParlaneAuthTokensRefreshResponse()),
            R"(ParlaneAuthTokensRefreshResponse {"accessToken":"","parlaneAccountID":""})");
  EXPECT_NE(response, (ParlaneAuthTokensRefreshResponse{"other", "account", "pro"}));
}

}  // namespace
