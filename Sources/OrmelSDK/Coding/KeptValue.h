#pragma once

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::coding {

/// A value as a record keeps it. Records outlive the message that they came in, so a part that is much smaller than its
/// message is copied out; anything else shares the message, whose memory it then holds: never more than eight times its
/// own, or a few kilobytes.
///
/// Takes constant time for a part of a small message, else time in proportion to the part, and at most to the message.
JSONValue kept(const JSONValue& value);

}  // namespace ormel::coding
