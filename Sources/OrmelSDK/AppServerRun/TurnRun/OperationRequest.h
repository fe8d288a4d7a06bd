#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/Input/UserInput.h"
#include "OrmelSDK/Options/TurnOptions.h"

namespace ormel::detail {

/// An operation that a run is to carry out.
struct OperationRequest {
  /// A turn on a thread, or on a new one.
  struct Turn {
    std::optional<std::string> existingThreadID;
    Input input;
    TurnOptions turnOptions;
  };
  struct Review {
    std::string existingThreadID;
    ReviewTarget target;
    ReviewDelivery delivery;
  };
  struct Compaction {
    std::string existingThreadID;
  };
  /// A turn on an ephemeral copy of the thread.
  struct EphemeralForkTurn {
    std::string existingThreadID;
    Input input;
    std::string developerInstructions;
    TurnOptions turnOptions;
  };

  static OperationRequest turn(std::optional<std::string> existingThreadID, Input input, TurnOptions turnOptions) {
    return OperationRequest(Turn{std::move(existingThreadID), std::move(input), std::move(turnOptions)});
  }
  static OperationRequest review(std::string existingThreadID, ReviewTarget target, ReviewDelivery delivery) {
    return OperationRequest(Review{std::move(existingThreadID), std::move(target), delivery});
  }
  static OperationRequest compaction(std::string existingThreadID) {
    return OperationRequest(Compaction{std::move(existingThreadID)});
  }
  static OperationRequest ephemeralForkTurn(std::string existingThreadID, Input input,
                                            std::string developerInstructions, TurnOptions turnOptions) {
    return OperationRequest(EphemeralForkTurn{std::move(existingThreadID), std::move(input),
                                              std::move(developerInstructions), std::move(turnOptions)});
  }

  std::variant<Turn, Review, Compaction, EphemeralForkTurn> value;

 private:
  template <typename Kind>
  explicit OperationRequest(Kind kind) : value(std::move(kind)) {}
};

}  // namespace ormel::detail
