#pragma once

#include <optional>
#include <string>

// The optional arguments of the calls about files. One that is given is sent, also when it is empty; one that is absent
// is left to the server.
namespace ormel {

/// Says how `createDirectory` treats missing parents.
struct CreateDirectoryParams {
  CreateDirectoryParams() {}
  /// Whether they are created too.
  std::optional<bool> recursive;
};

/// Says what `removePath` removes.
struct RemovePathParams {
  RemovePathParams() {}
  /// Whether a directory goes with its contents.
  std::optional<bool> recursive;
  /// Whether it is no failure that nothing is there.
  std::optional<bool> force;
};

/// Says what `copyPath` copies.
struct CopyPathParams {
  CopyPathParams() {}
  /// Whether a directory is copied with its contents.
  std::optional<bool> recursive;
};

/// Relates a `fuzzyFileSearch` to those before. An absent token is sent as null.
struct FuzzyFileSearchParams {
  FuzzyFileSearchParams() {}
  /// A search ends the one before that has the same token.
  std::optional<std::string> cancellationToken;
};

}  // namespace ormel
