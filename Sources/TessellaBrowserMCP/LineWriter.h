#pragma once

#include <string_view>

#include "OrmelSDK/JSONValue.h"

namespace ormel {

/// Writes values to a descriptor, each as one line.
class LineWriter {
 public:
  explicit LineWriter(int descriptor) noexcept : descriptor_(descriptor) {}

  /// Writes the text of `value`, then, as a write of its own, a line feed. A value that has no JSON text is left out.
  /// Fails with `OutputError`.
  ///
  /// Takes the value over, so that a large one is gone before its text waits for the reader.
  void write(JSONValue value);

 private:
  void writeBytes(std::string_view bytes);

  int descriptor_;
  bool pipeGrown_ = false;
};

}  // namespace ormel
