#pragma once

#include "OrmelSDK/JSONValue.h"

namespace ormel {

/// Writes `value` as one line: its text, then, as a write of its own, a line feed. A value that has no JSON text is
/// left out. Fails with `OutputError`.
///
/// Takes the value over, so that a large one is gone before its text waits for the reader.
void writeLine(int descriptor, JSONValue value);

}  // namespace ormel
