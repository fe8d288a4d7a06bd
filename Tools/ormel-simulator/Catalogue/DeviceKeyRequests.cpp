#include <array>
#include <cstdint>
#include <functional>

#include "ormel-simulator/Catalogue/Families.h"
#include "ormel-simulator/Requests/JSONMembers.h"
#include "ormel-simulator/Requests/NewID.h"
#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr const char* keyAlgorithm = "ecdsa_p256_sha256";
constexpr std::size_t bytesOfCoordinate = 32;

// How the public key of the curve P-256 begins in DER, up to the mark of a point with both coordinates.
constexpr std::string_view publicKeyHead(
    "\x30\x59\x30\x13\x06\x07\x2a\x86\x48\xce\x3d\x02\x01\x06\x08\x2a\x86\x48\xce\x3d\x03\x01\x07\x03\x42\x00\x04", 27);

std::string base64(std::string_view bytes) {
  constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t start = 0; start < bytes.size(); start += 3) {
    const std::string_view group = bytes.substr(start, 3);
    std::uint32_t bits = 0;
    for (std::size_t index = 0; index < 3; ++index) {
      bits = bits << 8 | (index < group.size() ? static_cast<unsigned char>(group[index]) : 0U);
    }
    for (std::size_t index = 0; index < 4; ++index) {
      text += index <= group.size() ? digits[bits >> (18 - 6 * index) & 63U] : '=';
    }
  }
  return text;
}

/// Bytes that look random, and are the same for the same seed everywhere.
std::string bytesFrom(std::string_view seed, std::size_t count) {
  std::uint64_t state = 14695981039346656037U;
  const auto mix = [&state](unsigned char byte) { state = (state ^ byte) * 1099511628211U; };
  for (const char byte : seed) mix(static_cast<unsigned char>(byte));
  std::string bytes;
  while (bytes.size() < count) {
    mix(static_cast<unsigned char>(bytes.size()));
    bytes += static_cast<char>(state >> 40 & 0xffU);
  }
  return bytes;
}

/// A whole number above 0 in DER; its first bits are such that it needs no further byte for its sign.
std::string numberInDER(std::string_view seed) {
  std::string number = bytesFrom(seed, bytesOfCoordinate);
  number.front() = static_cast<char>((static_cast<unsigned char>(number.front()) & 0x7fU) | 0x40U);
  return std::string("\x02\x20", 2) + number;
}

JSONValue keyJSON(const std::string& id, const JSONValue& key) {
  return JSONValue::object(
      {{"keyId", id},
       {"publicKeySpkiDerBase64", base64(std::string(publicKeyHead) + bytesFrom(id, 2 * bytesOfCoordinate))},
       {"algorithm", keyAlgorithm},
       {"protectionClass", anyMember(key, "protectionClass")}});
}

JSONValue knownKey(Catalogue& catalogue, const std::string& id) {
  const JSONValue key = catalogue.state().read().at({"deviceKeys", id});
  if (key.isNull()) throw Refusal(invalidParams, "there is no device key with the keyId " + id);
  return key;
}

JSONValue createKey(Catalogue& catalogue, const RequestParams& params) {
  const std::string user = params.text("accountUserId");
  const std::string client = params.text("clientId");
  const auto policy = params.wordIfGiven("protectionPolicy", {"hardware_only", "allow_os_protected_nonextractable"});
  const bool isHardware = policy == "hardware_only";
  const std::string id = newID();
  const JSONValue key =
      JSONValue::object({{"accountUserId", user},
                         {"clientId", client},
                         {"protectionClass", isHardware ? "hardware_tpm" : "os_protected_nonextractable"}});
  catalogue.state().change([&](CatalogueDocument& state) { state.put({"deviceKeys", id}, key); });
  return keyJSON(id, key);
}

JSONValue readPublicKey(Catalogue& catalogue, const RequestParams& params) {
  const std::string id = params.text("keyId");
  return keyJSON(id, knownKey(catalogue, id));
}

JSONValue signPayload(Catalogue& catalogue, const RequestParams& params) {
  const std::string id = params.text("keyId");
  if (!params.has("payload")) throw Refusal(invalidParams, "payload must be given");
  knownKey(catalogue, id);
  const std::string payload = anyMember(params.json(), "payload").encode();
  const std::string numbers = numberInDER("r" + id + payload) + numberInDER("s" + id + payload);
  const std::string signature = "\x30" + std::string(1, static_cast<char>(numbers.size())) + numbers;
  return JSONValue::object({{"signatureDerBase64", base64(signature)},
                            {"signedPayloadBase64", base64(payload)},
                            {"algorithm", keyAlgorithm}});
}

constexpr auto deviceKeyRows = std::to_array<CatalogueRequest>({
    {"device/key/create", createKey},
    {"device/key/public", readPublicKey},
    {"device/key/sign", signPayload},
});

}  // namespace

CatalogueRequests deviceKeyRequests() { return deviceKeyRows; }

}  // namespace ormel::simulator
