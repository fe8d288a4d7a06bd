#pragma once

#include <optional>
#include <string>

#include "OrmelSDK/Input/UserInput.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelOptions.h"
#include "OrmelSDK/Options/ThreadOptions.h"
#include "OrmelSDK/Options/TurnOptions.h"

namespace ormel::detail {

/// The params of "thread/start".
JSONValue buildThreadStartParams(const ThreadOptions& threadOptions, const OrmelOptions& ormelOptions);

/// The params of "thread/resume": every choice of a start but those that only the making of a thread can take.
JSONValue buildThreadResumeParams(const std::string& threadID, const ThreadOptions& threadOptions,
                                  const OrmelOptions& ormelOptions);

/// The params of "turn/start".
JSONValue buildTurnStartParams(const std::string& threadID, const Input& input, const TurnOptions& turnOptions,
                               const ThreadOptions& threadOptions);

/// The params of "turn/steer", which adds to a turn and changes none of its choices.
JSONValue buildTurnSteerParams(const std::string& threadID, const std::string& turnID, const Input& input,
                               const TurnOptions& turnOptions);

/// The sandbox policy of a turn: its own, or one made from the thread's options. Absent if neither says anything.
std::optional<JSONValue> buildSandboxPolicy(const TurnOptions& turnOptions, const ThreadOptions& threadOptions);

/// The server takes a collaboration mode only together with a model; where none is known, there is no payload.
std::optional<JSONValue> buildCollaborationModePayload(const TurnOptions& turnOptions,
                                                       const ThreadOptions& threadOptions);

/// The params of "skills/extraRoots/set": the roots that are not blank, trimmed. Absent if there are none.
std::optional<JSONValue> buildSkillExtraRootsParams(const ThreadOptions& threadOptions);

}  // namespace ormel::detail
