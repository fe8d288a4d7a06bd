#include "OrmelSDK/Records/DeviceRecords.h"

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::EnumerationTable<ormel::RemoteControlConnectionStatus> {
  static constexpr auto rule = closed;
  static constexpr Word<RemoteControlConnectionStatus> words[] = {
      {RemoteControlConnectionStatus::disabled, "disabled"},
      {RemoteControlConnectionStatus::connecting, "connecting"},
      {RemoteControlConnectionStatus::connected, "connected"},
      {RemoteControlConnectionStatus::errored, "errored"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::RemoteControlStatusResponse> {
  static constexpr Field fields[] = {
      required<&RemoteControlStatusResponse::status>("status"),
      required<&RemoteControlStatusResponse::serverName>("serverName"),
      required<&RemoteControlStatusResponse::installationID>("installationId"),
      optional<&RemoteControlStatusResponse::environmentID>("environmentId"),
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::WindowsSandboxReadiness> {
  static constexpr auto rule = closed;
  static constexpr Word<WindowsSandboxReadiness> words[] = {
      {WindowsSandboxReadiness::ready, "ready"},
      {WindowsSandboxReadiness::notConfigured, "notConfigured"},
      {WindowsSandboxReadiness::updateRequired, "updateRequired"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::WindowsSandboxReadinessResponse> {
  static constexpr Field fields[] = {
      required<&WindowsSandboxReadinessResponse::status>("status"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::WindowsSandboxSetupStartResponse> {
  static constexpr Field fields[] = {
      required<&WindowsSandboxSetupStartResponse::started>("started"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::AttestationGenerateResponse> {
  static constexpr Field fields[] = {
      required<&AttestationGenerateResponse::token>("token"),
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::DeviceKeyAlgorithm> {
  static constexpr auto rule = closed;
  static constexpr Word<DeviceKeyAlgorithm> words[] = {
      {DeviceKeyAlgorithm::ecdsaP256SHA256, "ecdsa_p256_sha256"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::DeviceKeyProtectionClass> {
  static constexpr auto rule = closed;
  static constexpr Word<DeviceKeyProtectionClass> words[] = {
      {DeviceKeyProtectionClass::hardwareSecureEnclave, "hardware_secure_enclave"},
      {DeviceKeyProtectionClass::hardwareTPM, "hardware_tpm"},
      {DeviceKeyProtectionClass::osProtectedNonextractable, "os_protected_nonextractable"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::DeviceKeyCreateResponse> {
  static constexpr Field fields[] = {
      required<&DeviceKeyCreateResponse::keyID>("keyId"),
      required<&DeviceKeyCreateResponse::publicKeySPKIDERBase64>("publicKeySpkiDerBase64"),
      required<&DeviceKeyCreateResponse::algorithm>("algorithm"),
      required<&DeviceKeyCreateResponse::protectionClass>("protectionClass"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::DeviceKeySignResponse> {
  static constexpr Field fields[] = {
      required<&DeviceKeySignResponse::signatureDERBase64>("signatureDerBase64"),
      required<&DeviceKeySignResponse::signedPayloadBase64>("signedPayloadBase64"),
      required<&DeviceKeySignResponse::algorithm>("algorithm"),
  };
};

ORMEL_DEFINE_ENUMERATION(RemoteControlConnectionStatus)
ORMEL_DEFINE_RECORD(RemoteControlStatusResponse)
ORMEL_DEFINE_ENUMERATION(WindowsSandboxReadiness)
ORMEL_DEFINE_RECORD(WindowsSandboxReadinessResponse)
ORMEL_DEFINE_RECORD(WindowsSandboxSetupStartResponse)
ORMEL_DEFINE_RECORD(AttestationGenerateResponse)
ORMEL_DEFINE_ENUMERATION(DeviceKeyAlgorithm)
ORMEL_DEFINE_ENUMERATION(DeviceKeyProtectionClass)
ORMEL_DEFINE_RECORD(DeviceKeyCreateResponse)
ORMEL_DEFINE_RECORD(DeviceKeySignResponse)
