#include "OrmelSDK/Thread.h"

#include <ostream>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Conversation.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

using detail::Conversation;

const std::shared_ptr<Conversation>& Thread::conversation() const {
  if (!conversation_) throw Error("This Thread is the handle of no conversation: ask Ormel::startThread for one");
  return conversation_;
}

std::optional<std::string> Thread::id() const { return conversation()->id(); }

Task<Turn> Thread::run(Input input, TurnOptions turnOptions) const {
  return Conversation::run(conversation(), std::move(input), std::move(turnOptions));
}

Task<StreamedTurn> Thread::runStreamed(Input input, TurnOptions turnOptions) const {
  return Conversation::runStreamedInternal(conversation(), std::move(input), std::move(turnOptions));
}

Task<StreamedTurn> Thread::startReviewStreamed(ReviewTarget target, ReviewDelivery delivery,
                                               std::optional<AbortSignal> signal) const {
  return Conversation::startReviewStreamed(conversation(), std::move(target), delivery, std::move(signal));
}

Task<StreamedTurn> Thread::compactStreamed(std::optional<AbortSignal> signal) const {
  return Conversation::compactStreamed(conversation(), std::move(signal));
}

Task<StreamedTurn> Thread::runSideConversationStreamed(Input input, std::string developerInstructions,
                                                       TurnOptions turnOptions) const {
  return Conversation::runSideConversationStreamed(conversation(), std::move(input), std::move(developerInstructions),
                                                   std::move(turnOptions));
}

Task<void> Thread::steer(Input input, TurnOptions turnOptions) const {
  return Conversation::steer(conversation(), std::move(input), std::move(turnOptions));
}

Task<void> Thread::submitRequestUserInput(std::string itemID,
                                          std::map<std::string, std::vector<std::string>> answers) const {
  return Conversation::submitRequestUserInput(conversation(), std::move(itemID), std::move(answers));
}

Task<void> Thread::interrupt() const { return Conversation::interrupt(conversation()); }

Task<void> Thread::idle() const { return Conversation::idle(conversation()); }

Task<void> Thread::close() const { return Conversation::close(conversation()); }

std::ostream& operator<<(std::ostream& stream, const Turn& value) {
  JSONObjectBuilder shown;
  std::vector<JSONValue> items;
  items.reserve(value.items.size());
  for (const ThreadItem& item : value.items) items.push_back(encode(item));
  shown.set("items", JSONValue::array(items)).set("finalResponse", value.finalResponse);
  if (value.usage) shown.set("usage", encode(*value.usage));
  return stream << shown.build();
}

bool operator==(const Turn&, const Turn&) = default;

}  // namespace ormel
