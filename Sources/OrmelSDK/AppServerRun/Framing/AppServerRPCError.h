#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The server's answer to a request that it refused or could not serve.
///
/// `what()` is "App-server error " followed by the code, ": " and the server's message.
///
/// *Thread safety*: an immutable value.
class ORMEL_EXPORT AppServerRPCError : public Error {
 public:
  /// The code of an answer to a method that its receiver does not serve.
  static constexpr std::int64_t methodNotFoundCode = -32601;
  /// The code of a request that is not valid; some servers use it for unknown methods too.
  static constexpr std::int64_t invalidRequestCode = -32600;
  /// The code assumed when an error object has no usable one.
  static constexpr std::int64_t unknownErrorCode = -32000;

  AppServerRPCError(std::int64_t code, std::string message, std::optional<JSONValue> data = std::nullopt);

  /// Reads the `error` member of a response. A member that is missing or of the wrong type is replaced: the
  /// code by `unknownErrorCode`, the message by "Unknown app-server error". A whole `code` outside the signed
  /// 64-bit range ends the process, as in `JSONValue::intValue`.
  static AppServerRPCError fromJSONValue(const JSONValue& error);

  std::int64_t code() const noexcept { return code_; }

  /// The server's message, without the code.
  const std::string& message() const noexcept { return message_; }

  /// The `data` member, also if it is JSON null; empty if the server sent none.
  const std::optional<JSONValue>& data() const noexcept { return data_; }

  friend bool operator==(const AppServerRPCError& left, const AppServerRPCError& right) {
    return left.code_ == right.code_ && left.message_ == right.message_ && left.data_ == right.data_;
  }

 protected:
  std::string generalAdvice() const override;

 private:
  std::int64_t code_;
  std::string message_;
  std::optional<JSONValue> data_;
};

}  // namespace ormel
