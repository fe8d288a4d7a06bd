#pragma once

#include <map>
#include <optional>
#include <string>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Handlers/AsyncHandler.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// A JSON schema in a file of its own, for a process that wants it as a path.
///
/// *Object lifetimes*: the file stays until `cleanup` is called, also when this value is gone. Copies name the same
/// file.
class OutputSchemaFile {
 public:
  /// Names no file, and has nothing to clean up.
  OutputSchemaFile();

  /// Absolute path of the file; absent if there was no schema.
  std::optional<std::string> schemaPath;

  /// Removes the file's directory and all that is in it: `co_await file.cleanup()`, once the file is not needed any
  /// more. Never fails: what cannot be removed stays, and a second call does nothing. A stop request does not keep it
  /// from its work. May be called from any thread.
  AsyncHandler<void()> cleanup;
};

/// Writes a schema to "schema.json" in a new directory of its own below the system's temporary directory, which is
/// `TMPDIR` if that is set. The keys of all objects are in ascending order of their bytes, so that equal schemas give
/// equal files, and a reader never sees a part of the file. Without a schema nothing is written; an empty one is
/// written as any other.
///
/// *Errors*: `FileSystemError` if the directory cannot be made or the file cannot be written, `EncodingError` if the
/// schema cannot be put into JSON. Nothing stays behind then.
///
/// *Cancellation*: none; the work is short, and its caller is told of every directory that was made.
///
/// *Thread safety*: may be called from any thread. It does not block the caller's strand.
Task<OutputSchemaFile> createOutputSchemaFile(std::optional<std::map<std::string, JSONValue>> schema);

}  // namespace ormel
