#include "OrmelSDK/Events/ThreadEvent.h"

#include <gtest/gtest.h>

#include <concepts>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Support/CodingChecks.h"

namespace {

using namespace ormel;
using tests::decoded;

TEST(ThreadEvent, CarriesAnItemOfAnUnknownTypeThereAndBack) {
  constexpr std::string_view text = R"({"type":"item.updated","item":{"type":"future_thing","id":"x","a":1}})";
  tests::expectWritten(decoded<ThreadEvent>(text), text);
}

TEST(ThreadEvent, OfAnItemThatIsWrittenWithoutATypeDoesNotReadBack) {
  const auto event = decoded<ThreadEvent>(R"({"type":"item.updated","item":{"type":"plan","id":"p","text":"x"}})");
  EXPECT_EQ(encode(event), JSONValue::decode(R"({"type":"item.updated","item":{"id":"p","text":"x"}})"));
  EXPECT_THROW(decode<ThreadEvent>(encode(event)), DecodingError);
}

struct RecoveryProvider {
  std::string operator()(const AuthRecoveryEvent& recovery) const { return recovery.provider; }
  template <typename Event>
    requires(!std::derived_from<Event, AuthRecoveryEvent>)
  std::string operator()(const Event&) const {
    return "none";
  }
};

TEST(ThreadEvent, TellsBeginningAndEndOfARecoveryApartAndShowsThemAsOne) {
  const ThreadEvent started = AuthRecoveryStartedEvent{{"t", "u", "p", "m"}};
  const ThreadEvent completed = AuthRecoveryCompletedEvent{{"t", "u", "p", "m"}};
  EXPECT_FALSE(started == completed);
  EXPECT_EQ(visit(started, RecoveryProvider()), "p");
  EXPECT_EQ(visit(completed, RecoveryProvider()), "p");
  EXPECT_EQ(visit(ThreadEvent(ThreadErrorEvent{"m"}), RecoveryProvider()), "none");
}

TEST(ThreadEvent, CarriesALargeAndADeepPayload) {
  ThreadStartedEvent started{"t", {}, std::vector<std::string>(100'000, std::string(100, 'x'))};
  EXPECT_EQ(decode<ThreadEvent>(JSONValue::decode(encode(ThreadEvent(started)).encode())), ThreadEvent(started));
  constexpr std::size_t levels = 500;
  const std::string nested = std::string(levels, '[') + std::string(levels, ']');
  const auto deep = decoded<ThreadEvent>(
      R"({"type":"turn.moderationMetadata","thread_id":"t","turn_id":"u","metadata":)" + nested + "}");
  EXPECT_EQ(std::get<TurnModerationMetadataEvent>(deep.value).metadata.encode(), nested);
  EXPECT_EQ(decode<ThreadEvent>(encode(deep)), deep);
}

TEST(ThreadEvent, NamesThePathToWhatIsWrong) {
  try {
    (void)decoded<ThreadEvent>(R"({"type":"hook.started","thread_id":"t","run":{"id":3}})");
    ADD_FAILURE() << "decoded";
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.context().codingPath, (std::vector<std::string>{"run", "id"}));
  }
}

TEST(ThreadEvent, StreamsInOneReadableLine) {
  std::ostringstream stream;
  stream << ThreadEvent(UnknownThreadEvent{"future.event"});
  EXPECT_EQ(stream.str(), R"(ThreadEvent {"type":"future.event"})");
}

}  // namespace
