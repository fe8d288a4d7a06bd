#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

// The optional arguments of the calls about commands and the environments that they run in. One that is given is sent,
// also when it is empty; one that is absent is left to the server.
namespace ormel {

/// Whether the sandbox is set up with the rights of an administrator.
enum class WindowsSandboxSetupMode { elevated, unelevated };
std::ostream& operator<<(std::ostream& stream, const WindowsSandboxSetupMode& value);

/// Shapes how `executeCommand` runs a command.
struct ExecuteCommandParams {
  ExecuteCommandParams() {}
  /// A name of the caller's choice, by which other calls reach the command while it runs.
  std::optional<std::string> processID;
  std::optional<std::string> workingDirectory;
  std::optional<std::int64_t> timeoutMilliseconds;
  /// Whether the server tells the output while it comes, in notifications.
  std::optional<bool> streamStdoutStderr;
};

/// The change that `writeCommandInput` makes to a command's input.
struct WriteCommandInputParams {
  WriteCommandInputParams() {}
  /// Bytes to append, in Base64.
  std::optional<std::string> deltaBase64;
  /// Whether the input ends, after these.
  std::optional<bool> closeStdin;
};

/// Says where `startWindowsSandboxSetup` prepares the sandbox.
struct StartWindowsSandboxSetupParams {
  StartWindowsSandboxSetupParams() {}
  std::optional<std::string> workingDirectory;
};

}  // namespace ormel
