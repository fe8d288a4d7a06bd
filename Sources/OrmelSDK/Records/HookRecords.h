#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Records/HookWords.h"

// Every type here has a JSON form.
namespace ormel {

/// Why a file of hooks could not be used.
struct HookErrorInfo {
  /// The file.
  std::string path;
  std::string message;
  friend bool operator==(const HookErrorInfo&, const HookErrorInfo&);
  friend std::ostream& operator<<(std::ostream& stream, const HookErrorInfo& value);
};

/// A hook as it is configured.
struct HookMetadata {
  /// Names the hook when it is switched on or off.
  std::string key;
  HookEventName eventName;
  HookHandlerType handlerType;
  /// Narrows the events that the hook runs for, in the server's own notation.
  std::optional<std::string> matcher;
  /// The command that a hook of type `command` runs.
  std::optional<std::string> command;
  /// The MCP server of a hook of type `mcpTool`.
  std::optional<std::string> server;
  /// The tool that a hook of type `mcpTool` calls.
  std::optional<std::string> tool;
  /// How long the hook may run, in seconds.
  std::int64_t timeoutSeconds = 0;
  /// The message that is shown while the hook runs.
  std::optional<std::string> statusMessage;
  /// The most context that the hook may add, as the server counts it.
  std::optional<std::int64_t> additionalContextLimit;
  /// The file that the hook is configured in.
  std::string sourcePath;
  HookSource source = HookSource::unknown;
  /// The plugin that brought the hook, if one did.
  std::optional<std::string> pluginID;
  /// The place of the hook in a list for the user, in ascending order.
  std::int64_t displayOrder = 0;
  bool enabled = false;
  /// Whether the hook is prescribed from outside and not the user's own.
  bool isManaged = false;
  /// A digest of the hook as it stands now, by which the server notices a change. Empty if it tells none.
  std::string currentHash;
  HookTrustStatus trustStatus = HookTrustStatus::untrusted;
  friend bool operator==(const HookMetadata&, const HookMetadata&);
  friend std::ostream& operator<<(std::ostream& stream, const HookMetadata& value);
};

/// The hooks that hold in one directory.
struct HooksListEntry {
  std::string cwd;
  std::vector<HookMetadata> hooks;
  /// Doubts about the configuration, in sentences for the user.
  std::vector<std::string> warnings;
  /// The files that could not be used; their hooks are missing from `hooks`.
  std::vector<HookErrorInfo> errors;
  friend bool operator==(const HooksListEntry&, const HooksListEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const HooksListEntry& value);
};

/// The hooks of each directory that was asked about.
struct HooksListResponse {
  std::vector<HooksListEntry> data;
  friend bool operator==(const HooksListResponse&, const HooksListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const HooksListResponse& value);
};

}  // namespace ormel
