#pragma once

namespace ormel::detail {

/// The things that a child needs to become its program, made ready before its birth: a child shares the memory of this
/// process, in which it must not allocate. The plan's owner keeps everything that it points to.
struct ChildPlan {
  const char* executable = nullptr;
  /// Ended by a null pointer.
  char* const* arguments = nullptr;
  /// Ended by a null pointer.
  char* const* environment = nullptr;
  /// Which descriptor becomes standard stream 0, 1 and 2: one above those, or `StandardStreams::inherited`.
  int streams[3] = {};
};

}  // namespace ormel::detail
