#include "OrmelSDK/Thread.h"

#include "OrmelSDK/Conversation.h"

namespace ormel {

using detail::Conversation;

std::optional<std::string> Thread::id() const { return conversation_->id(); }

Task<Turn> Thread::run(Input input, TurnOptions turnOptions) const {
  return Conversation::run(conversation_, std::move(input), std::move(turnOptions));
}

Task<StreamedTurn> Thread::runStreamed(Input input, TurnOptions turnOptions) const {
  return Conversation::runStreamedInternal(conversation_, std::move(input), std::move(turnOptions));
}

Task<StreamedTurn> Thread::startReviewStreamed(ReviewTarget target, ReviewDelivery delivery,
                                               std::optional<AbortSignal> signal) const {
  return Conversation::startReviewStreamed(conversation_, std::move(target), delivery, std::move(signal));
}

Task<StreamedTurn> Thread::compactStreamed(std::optional<AbortSignal> signal) const {
  return Conversation::compactStreamed(conversation_, std::move(signal));
}

Task<StreamedTurn> Thread::runSideConversationStreamed(Input input, std::string developerInstructions,
                                                       TurnOptions turnOptions) const {
  return Conversation::runSideConversationStreamed(conversation_, std::move(input), std::move(developerInstructions),
                                                   std::move(turnOptions));
}

Task<void> Thread::steer(Input input, TurnOptions turnOptions) const {
  return Conversation::steer(conversation_, std::move(input), std::move(turnOptions));
}

Task<void> Thread::submitRequestUserInput(std::string itemID,
                                          std::map<std::string, std::vector<std::string>> answers) const {
  return Conversation::submitRequestUserInput(conversation_, std::move(itemID), std::move(answers));
}

Task<void> Thread::interrupt() const { return Conversation::interrupt(conversation_); }

bool operator==(const Turn&, const Turn&) = default;

}  // namespace ormel
