#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"

// Every type here has a JSON form.
namespace ormel {

/// State of the connection for remote control.
enum class RemoteControlConnectionStatus { disabled, connecting, connected, errored };
std::ostream& operator<<(std::ostream& stream, const RemoteControlConnectionStatus& value);

/// Whether this server can be controlled remotely, and as what.
struct RemoteControlStatusResponse {
  RemoteControlConnectionStatus status = RemoteControlConnectionStatus::disabled;
  /// The name under which the server is offered.
  std::string serverName;
  std::string installationID;
  std::optional<std::string> environmentID;
  friend bool operator==(const RemoteControlStatusResponse&, const RemoteControlStatusResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const RemoteControlStatusResponse& value);
};

/// Whether commands can be confined on Windows.
enum class WindowsSandboxReadiness { ready, notConfigured, updateRequired };
std::ostream& operator<<(std::ostream& stream, const WindowsSandboxReadiness& value);

/// Whether the sandbox of commands can be used on Windows.
struct WindowsSandboxReadinessResponse {
  WindowsSandboxReadiness status = WindowsSandboxReadiness::notConfigured;
  friend bool operator==(const WindowsSandboxReadinessResponse&, const WindowsSandboxReadinessResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const WindowsSandboxReadinessResponse& value);
};

/// Whether the sandbox is being set up.
struct WindowsSandboxSetupStartResponse {
  bool started = false;
  friend bool operator==(const WindowsSandboxSetupStartResponse&, const WindowsSandboxSetupStartResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const WindowsSandboxSetupStartResponse& value);
};

/// Evidence of what this installation is.
struct AttestationGenerateResponse {
  /// Opaque to this library.
  std::string token;
  friend bool operator==(const AttestationGenerateResponse&, const AttestationGenerateResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const AttestationGenerateResponse& value);
};

/// The algorithm that a device key signs with.
enum class DeviceKeyAlgorithm { ecdsaP256SHA256 };
std::ostream& operator<<(std::ostream& stream, const DeviceKeyAlgorithm& value);

/// The protection that keeps a device key from being copied.
enum class DeviceKeyProtectionClass { hardwareSecureEnclave, hardwareTPM, osProtectedNonextractable };
std::ostream& operator<<(std::ostream& stream, const DeviceKeyProtectionClass& value);

/// A key of this device: its public half, and how the private one is kept.
struct DeviceKeyCreateResponse {
  std::string keyID;
  /// The public half: a SubjectPublicKeyInfo in DER, in Base64.
  std::string publicKeySPKIDERBase64;
  DeviceKeyAlgorithm algorithm = DeviceKeyAlgorithm::ecdsaP256SHA256;
  DeviceKeyProtectionClass protectionClass = DeviceKeyProtectionClass::hardwareSecureEnclave;
  friend bool operator==(const DeviceKeyCreateResponse&, const DeviceKeyCreateResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const DeviceKeyCreateResponse& value);
};

/// A signature by a key of this device.
struct DeviceKeySignResponse {
  /// The signature in DER, in Base64.
  std::string signatureDERBase64;
  /// The bytes that were signed, in Base64.
  std::string signedPayloadBase64;
  DeviceKeyAlgorithm algorithm = DeviceKeyAlgorithm::ecdsaP256SHA256;
  friend bool operator==(const DeviceKeySignResponse&, const DeviceKeySignResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const DeviceKeySignResponse& value);
};

}  // namespace ormel
