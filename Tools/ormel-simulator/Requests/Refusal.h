#pragma once

#include <string>

#include "OrmelSDK/Base/Error.h"

namespace ormel::simulator {

inline constexpr int parseError = -32700;
inline constexpr int invalidRequest = -32600;
inline constexpr int methodNotFound = -32601;
inline constexpr int invalidParams = -32602;
inline constexpr int internalError = -32603;

/// The answer to a request is an error.
class Refusal : public Error {
 public:
  Refusal(int code, const std::string& text) : Error(text), code_(code) {}

  int code() const noexcept { return code_; }

 private:
  int code_;
};

}  // namespace ormel::simulator
