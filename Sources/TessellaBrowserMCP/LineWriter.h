#pragma once

#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// Writes values to a descriptor, each as one line.
class LineWriter {
 public:
  explicit LineWriter(int descriptor) noexcept : descriptor_(descriptor) {}

  /// Writes the text of `value`, then, as a write of its own, a line feed. A value that has no JSON text is left out.
  /// Fails with `OutputError`.
  ///
  /// A long text is written while it is made, so that it is never in memory as a whole and its reader can begin.
  void write(const JSONValue& value);

 private:
  void writeBytes(std::string_view bytes);

  int descriptor_;
  detail::ByteBuffer piece_;
  bool pipeGrown_ = false;
};

}  // namespace ormel
