#include "Expectations/Registry.h"
#include "OrmelSDK/Input/AdditionalContext.h"
#include "OrmelSDK/Input/ApprovalMode.h"
#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/Input/ThreadChoices.h"
#include "OrmelSDK/Input/UserInput.h"

namespace ormel::tests {

void registerInput(Registry& registry) {
  registry.enumeration<ImageDetail>();
  registry.record<UserInputTextByteRange>();
  registry.record<UserInputTextElement>();
  registry.variant<UserInput>();
  registry.enumeration<AdditionalContextKind>();
  registry.record<AdditionalContextEntry>();
  registry.record<GranularApprovalMode>();
  registry.special<ApprovalMode>();
  registry.enumeration<ReviewDelivery>();
  registry.enumeration<SandboxMode>();
  registry.enumeration<ApprovalsReviewer>();
  registry.enumeration<Personality>();
  registry.enumeration<ThreadStartSource>();
  registry.enumeration<ThreadSource>();
  registry.enumeration<WebSearchMode>();
  registry.enumeration<ModelReasoningSummary>();
  registry.enumeration<ModelVerbosity>();
  registry.enumeration<CollaborationMode>();
  registry.vocabulary<ModelReasoningEffort>({{"none", ModelReasoningEffort::none},
                                             {"minimal", ModelReasoningEffort::minimal},
                                             {"low", ModelReasoningEffort::low},
                                             {"medium", ModelReasoningEffort::medium},
                                             {"high", ModelReasoningEffort::high},
                                             {"xhigh", ModelReasoningEffort::xhigh},
                                             {"max", ModelReasoningEffort::max},
                                             {"ultra", ModelReasoningEffort::ultra}});
  registry.vocabulary<ServiceTier>({{"fast", ServiceTier::fast}, {"flex", ServiceTier::flex}});
}

}  // namespace ormel::tests
