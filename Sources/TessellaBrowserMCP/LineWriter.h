#pragma once

#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// Writes values to a descriptor, each as one line.
class LineWriter {
 public:
  explicit LineWriter(int descriptor) noexcept : descriptor_(descriptor) {}

  /// Writes the text of `value`, then a line feed in a separate write. A value that has no JSON text is skipped.
  /// Fails with `OutputError`.
  ///
  /// A long text is streamed: it is never in memory as a whole, and its reader can start early.
  void write(const JSONValue& value);

 private:
  void writeBytes(std::string_view bytes);

  int descriptor_;
  detail::ByteBuffer piece_;
  bool pipeGrown_ = false;
};

}  // namespace ormel
