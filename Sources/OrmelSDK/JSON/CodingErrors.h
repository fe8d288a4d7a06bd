#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"

namespace ormel {

/// Why a text is not JSON: the first offence and where it stands. It comes as the underlying error of a
/// `DecodingError`, never by itself; `what()` is the reason with " at byte " and the offset behind it.
///
/// Immutable; may be copied, and read from any thread.
class ORMEL_EXPORT JSONSyntaxError : public Error {
 public:
  JSONSyntaxError(std::string_view reason, std::size_t byteOffset);

  /// Why the text is refused, without the position.
  const std::string& reason() const noexcept { return reason_; }

  /// Offset of the offending byte, counted from 0 at the start of the text.
  std::size_t byteOffset() const noexcept { return byteOffset_; }

 protected:
  std::string generalAdvice() const override;

 private:
  std::string reason_;
  std::size_t byteOffset_;
};

/// Where and why decoding stopped. A plain value that owns its texts.
struct DecodingContext {
  DecodingContext() = default;
  explicit DecodingContext(std::string description) : debugDescription(std::move(description)) {}

  /// Keys from the outermost value down to the failing one; empty at the top level.
  std::vector<std::string> codingPath;
  /// A description of the failure in English.
  std::string debugDescription;
  /// The failure beneath this one; null when there is none.
  std::shared_ptr<const Error> underlyingError;
};

/// A text or a JSON value that is not what the reader needs. Decoding is all or nothing: a call that throws
/// it has produced no value.
///
/// `what()` is the context's debug description, followed by the underlying error's text in parentheses if there
/// is one. Immutable; may be copied, and read from any thread.
class ORMEL_EXPORT DecodingError : public Error {
 public:
  enum class Kind {
    /// The value has another JSON type than the record's field.
    typeMismatch,
    /// JSON null where a value is needed.
    valueNotFound,
    /// A required key is absent.
    keyNotFound,
    /// The text is not JSON, or the value is outside of what its type can hold.
    dataCorrupted,
  };

  static DecodingError typeMismatch(std::string typeName, DecodingContext context);
  static DecodingError valueNotFound(std::string typeName, DecodingContext context);
  static DecodingError keyNotFound(std::string key, DecodingContext context);
  static DecodingError dataCorrupted(DecodingContext context);

  Kind kind() const noexcept { return kind_; }

  /// The unqualified name of the wanted type for `typeMismatch` and `valueNotFound`, the key for `keyNotFound`,
  /// empty for `dataCorrupted`.
  const std::string& subject() const noexcept { return subject_; }

  const DecodingContext& context() const noexcept { return context_; }

 protected:
  std::string generalAdvice() const override;

 private:
  DecodingError(Kind kind, std::string subject, DecodingContext context);

  Kind kind_;
  std::string subject_;
  DecodingContext context_;
};

/// A value that has no JSON form, which only values built in code can be: a number is not finite (thrown when the value
/// is written), or the nesting is deeper than `JSONValue::maximumDepth` (thrown when the value is built). `what()` says
/// which.
///
/// Immutable; may be copied, and read from any thread.
class ORMEL_EXPORT EncodingError : public Error {
 public:
  using Error::Error;

 protected:
  std::string generalAdvice() const override;
};

}  // namespace ormel
