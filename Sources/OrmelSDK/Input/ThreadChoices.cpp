#include "OrmelSDK/Input/ThreadChoices.h"

#include <string>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Input/ThreadChoicesTables.h"

namespace ormel::coding {

namespace {

void decodeCollaborationMode(CollaborationMode& into, const JSONValue& value, const CodingPath& path) {
  const JSONValue* const mode = value.objectValue() ? value.find("mode") : &value;
  if (!mode) failMissingKey("mode", path);
  const CodingPath modePath = mode == &value ? path : path.at("mode");
  const std::string_view text = textOf(*mode, modePath);
  const auto found = enumerationCase<CollaborationMode>(text);
  if (!found) failCorrupted("Unknown collaboration mode: " + std::string(text), modePath);
  into = *found;
}

}  // namespace

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(SandboxMode)
ORMEL_DEFINE_ENUMERATION(ApprovalsReviewer)
ORMEL_DEFINE_ENUMERATION(Personality)
ORMEL_DEFINE_ENUMERATION(ThreadStartSource)
ORMEL_DEFINE_ENUMERATION(ThreadSource)
ORMEL_DEFINE_ENUMERATION(WebSearchMode)
ORMEL_DEFINE_ENUMERATION(ModelReasoningSummary)
ORMEL_DEFINE_ENUMERATION(ModelVerbosity)
ORMEL_DEFINE_ENUMERATION_BY(CollaborationMode, decodeCollaborationMode)
ORMEL_DEFINE_PUBLIC_CODING(ModelReasoningEffort)
ORMEL_DEFINE_PUBLIC_CODING(ServiceTier)
