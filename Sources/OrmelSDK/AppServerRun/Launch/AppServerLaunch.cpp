#include "OrmelSDK/AppServerRun/Launch/AppServerLaunch.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "OrmelSDK/AppServerRun/Launch/PathList.h"
#include "OrmelSDK/AppServerRun/Launch/ProcessEnvironment.h"
#include "OrmelSDK/Base/OrmelProcessError.h"

namespace ormel::detail {

namespace {

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const auto& part : parts) {
    if (&part != &parts.front()) text += separator;
    text += part;
  }
  return text;
}

std::string enclosed(char opening, const std::vector<std::string>& parts, char closing) {
  std::string text(1, opening);
  text += joined(parts, ", ");
  text += closing;
  return text;
}

std::string memberPath(const std::string& path, const std::string& key) {
  std::string below = path;
  below += '.';
  below += key;
  return below;
}

void requireKey(const std::string& key) {
  if (key.empty()) {
    throw OrmelProcessError::invalidConfigOverride("Ormel config override keys must be non-empty strings");
  }
}

bool isBareTomlKey(std::string_view key) {
  return std::ranges::all_of(key, [](char byte) {
    return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') ||
           byte == '_' || byte == '-';
  });
}

// Shortest round-trip form that still looks like a float (has '.' or 'e').
std::string tomlDouble(double value, const std::string& path) {
  if (!std::isfinite(value)) {
    throw OrmelProcessError::invalidConfigOverride("Ormel config override at " + path + " must be a finite number");
  }
  constexpr double smallestPlain = 1e-4;
  constexpr double smallestWithExponent = 1e16;
  const double magnitude = std::abs(value);
  const bool plain = magnitude == 0 || (magnitude >= smallestPlain && magnitude < smallestWithExponent);
  std::array<char, 32> digits;
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                     plain ? std::chars_format::fixed : std::chars_format::scientific);
  std::string text(digits.data(), written.ptr);
  if (plain && text.find('.') == std::string::npos) text += ".0";
  return text;
}

std::string tomlArray(const OrmelConfigValue::Array& elements, const std::string& path) {
  std::vector<std::string> texts;
  texts.reserve(elements.size());
  for (const auto& element : elements) {
    texts.push_back(toTomlValueForCLI(element, path + "[" + std::to_string(texts.size()) + "]"));
  }
  return enclosed('[', texts, ']');
}

std::string tomlInlineTable(const OrmelConfigValue::Object& members, const std::string& path) {
  std::vector<std::string> texts;
  texts.reserve(members.size());
  for (const auto& [key, value] : members) {
    requireKey(key);
    std::string text = isBareTomlKey(key) ? key : quoteForTomlCLI(key);
    text += " = ";
    text += toTomlValueForCLI(value, memberPath(path, key));
    texts.push_back(std::move(text));
  }
  return enclosed('{', texts, '}');
}

// Empty for a text that is too large for a JSON value.
std::string writtenOrEmpty(std::string_view text, const JSONTextArrayWriter& write) {
  try {
    return write(text);
  } catch (const std::length_error&) {
    return {};
  }
}

}  // namespace

std::vector<std::string> buildAppServerArguments(const std::string& executablePath, const OrmelOptions& ormelOptions) {
  std::vector<std::string> overrides;
  flattenConfigOverridesForCLI(OrmelConfigValue::object(ormelOptions.configEnablingRequiredSDKFeatures()), "",
                               overrides);
  if (ormelOptions.baseUrl) overrides.push_back("velnor_base_url=" + quoteForTomlCLI(*ormelOptions.baseUrl));

  std::vector<std::string> arguments = {executablePath, "app-server", "--listen", "stdio://"};
  for (auto& text : overrides) {
    arguments.emplace_back("--config");
    arguments.push_back(std::move(text));
  }
  return arguments;
}

std::map<std::string, std::string> buildAppServerEnvironment(const OrmelOptions& ormelOptions,
                                                             const std::vector<std::string>& pathDirectories) {
  auto environment = ormelOptions.env ? *ormelOptions.env : ProcessEnvironment::current();
  environment.try_emplace("ORMEL_INTERNAL_ORIGINATOR_OVERRIDE", "ormel_sdk_ts");
  if (ormelOptions.apiKey) environment.insert_or_assign("ORMEL_API_KEY", *ormelOptions.apiKey);
  if (!pathDirectories.empty()) prependPathDirectories(pathDirectories, environment);
  return environment;
}

void prependPathDirectories(const std::vector<std::string>& directories,
                            std::map<std::string, std::string>& environment) {
  std::string& path = environment["PATH"];
  std::vector<std::string> parts = directories;
  for (const auto part : pathListParts(path)) {
    if (std::ranges::find(directories, part) == directories.end()) parts.emplace_back(part);
  }
  path = joined(parts, ":");
}

std::map<std::string, JSONValue> configJSONEnablingRequiredSDKFeatures(std::map<std::string, JSONValue> config) {
  JSONObjectBuilder features;
  JSONValue& slot = config["features"];
  if (const auto members = slot.objectValue()) {
    for (const auto& [key, value] : *members) features.set(key, value);
  }
  slot = features.set("goals", true).build();
  return config;
}

JSONValue configValueToJSONValue(const OrmelConfigValue& value) {
  if (const auto* text = value.stringValue()) return *text;
  if (const auto* integer = value.integerValue()) return *integer;
  if (const auto* number = value.doubleValue()) return *number;
  if (const auto* boolean = value.boolValue()) return *boolean;
  if (const auto* elements = value.arrayValue()) {
    std::vector<JSONValue> converted;
    converted.reserve(elements->size());
    std::ranges::transform(*elements, std::back_inserter(converted), configValueToJSONValue);
    return JSONValue::array(converted);
  }
  JSONObjectBuilder converted;
  for (const auto& [key, member] : *value.objectValue()) converted.set(key, configValueToJSONValue(member));
  return converted.build();
}

void flattenConfigOverridesForCLI(const OrmelConfigValue& value, const std::string& prefix,
                                  std::vector<std::string>& overrides) {
  const auto* const members = value.objectValue();
  if (!members) {
    if (prefix.empty()) {
      throw OrmelProcessError::invalidConfigOverride("Ormel config overrides must be a plain object");
    }
    overrides.push_back(prefix + "=" + toTomlValueForCLI(value, prefix));
    return;
  }
  if (members->empty() && !prefix.empty()) overrides.push_back(prefix + "={}");
  for (const auto& [key, member] : *members) {
    requireKey(key);
    flattenConfigOverridesForCLI(member, prefix.empty() ? key : memberPath(prefix, key), overrides);
  }
}

std::string toTomlValueForCLI(const OrmelConfigValue& value, const std::string& path) {
  if (const auto* text = value.stringValue()) return quoteForTomlCLI(*text);
  if (const auto* integer = value.integerValue()) return std::to_string(*integer);
  if (const auto* number = value.doubleValue()) return tomlDouble(*number, path);
  if (const auto* boolean = value.boolValue()) return *boolean ? "true" : "false";
  if (const auto* elements = value.arrayValue()) return tomlArray(*elements, path);
  return tomlInlineTable(*value.objectValue(), path);
}

std::string writeJSONTextArray(std::string_view text) { return JSONValue::array({JSONValue(text)}).encode(); }

std::string quoteForTomlCLI(std::string_view text, const JSONTextArrayWriter& write) {
  const std::string array = writtenOrEmpty(text, write);
  if (array.size() > 1) return array.substr(1, array.size() - 2);
  // A reader of TOML takes the two backslashes for one and the quote after them for the end. The form is kept as
  // servers have always been given it.
  std::string quoted = "\"";
  for (const char byte : text) {
    if (byte == '"') quoted += "\\\\";
    quoted += byte;
  }
  return quoted + '"';
}

}  // namespace ormel::detail
