#include "ormel-simulator/Catalogue/ModelData.h"

namespace ormel::simulator {

const JSONValue& modelDescriptors() {
  static const JSONValue value = JSONValue::decode(R"json([
  {"id": "simulated", "model": "simulated", "displayName": "Simulated",
   "description": "Answers at once, and says what it was told to say.", "modelSpecialty": "conversation",
   "hidden": false, "isDefault": true,
   "supportedReasoningEfforts": [
     {"reasoningEffort": "low", "description": "Hardly any thought"},
     {"reasoningEffort": "medium", "description": "Some thought"},
     {"reasoningEffort": "high", "description": "Much thought"}],
   "defaultReasoningEffort": "medium", "inputModalities": ["text", "image"], "supportsPersonality": true,
   "additionalSpeedTiers": ["fast"],
   "serviceTiers": [
     {"id": "fast", "name": "Fast", "description": "First in the queue, at a higher price"},
     {"id": "flex", "name": "Flexible", "description": "When there is room, at half the price"}],
   "defaultServiceTier": "flex"},
  {"id": "simulated-quick", "model": "simulated-quick", "displayName": "Simulated Quick",
   "description": "Short answers for small questions.", "hidden": false, "isDefault": false,
   "supportedReasoningEfforts": [
     {"reasoningEffort": "none", "description": "No thought at all"},
     {"reasoningEffort": "minimal", "description": "A glance"}],
   "defaultReasoningEffort": "none", "inputModalities": ["text"], "supportsPersonality": false,
   "multiAgentVersion": "disabled"},
  {"id": "simulated-deep", "model": "simulated-deep", "displayName": "Simulated Deep",
   "description": "Thinks for long, and about everything.", "modelSpecialty": "planning",
   "hidden": false, "isDefault": false,
   "availabilityNux": {"message": "Simulated Deep is new. It takes its time."},
   "supportedReasoningEfforts": [
     {"reasoningEffort": "high", "description": "Much thought"},
     {"reasoningEffort": "xhigh", "description": "More than that"},
     {"reasoningEffort": "max", "description": "Everything it has"}],
   "defaultReasoningEffort": "high", "inputModalities": ["text", "image"], "supportsPersonality": true,
   "serviceTiers": [{"id": "flex", "name": "Flexible", "description": "When there is room, at half the price"}],
   "defaultServiceTier": "flex"},
  {"id": "simulated-listener", "model": "simulated-listener", "displayName": "Simulated Listener",
   "description": "Hears as well as it reads.", "modelSpecialty": "audio", "hidden": false, "isDefault": false,
   "supportedReasoningEfforts": [{"reasoningEffort": "low", "description": "Hardly any thought"}],
   "defaultReasoningEffort": "low", "inputModalities": ["text", "audio"], "supportsPersonality": true},
  {"id": "simulated-elder", "model": "simulated-elder", "displayName": "Simulated Elder",
   "description": "The one before, kept for those who are used to it.", "hidden": false, "isDefault": false,
   "upgrade": "simulated",
   "upgradeInfo": {"model": "simulated", "upgradeCopy": "Simulated says more in fewer words.",
                   "modelLink": "https://parlane.example/models/simulated",
                   "migrationMarkdown": "Choose **Simulated**; nothing else changes.", "retirementAt": 1990000000},
   "supportedReasoningEfforts": [{"reasoningEffort": "medium", "description": "Some thought"}],
   "defaultReasoningEffort": "medium", "inputModalities": ["text"], "supportsPersonality": false},
  {"id": "simulated-reviewer", "model": "simulated-reviewer", "displayName": "Simulated Reviewer",
   "description": "Reads what others have written; not chosen by users.", "modelSpecialty": "review",
   "hidden": true, "isDefault": false,
   "supportedReasoningEfforts": [{"reasoningEffort": "high", "description": "Much thought"}],
   "defaultReasoningEffort": "high", "inputModalities": ["text"], "supportsPersonality": false}
])json");
  return value;
}

const JSONValue& permissionProfiles() {
  static const JSONValue value = JSONValue::decode(R"json([
  {"id": ":read-only", "description": "Reads files, and changes nothing", "allowed": true},
  {"id": ":workspace", "description": "Changes files of the workspace", "allowed": true},
  {"id": "careful-gardener", "description": "Changes files of the garden, and asks for the rest", "allowed": true},
  {"id": ":danger-full-access", "description": "Does anything", "allowed": false}
])json");
  return value;
}

}  // namespace ormel::simulator
