#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelOptions.h"

namespace ormel::detail {

/// The argument list of the server's process, from the executable on. Fails with `OrmelProcessError` of the kind
/// `invalidConfigOverride` if a config override has no form on the command line.
std::vector<std::string> buildAppServerArguments(const std::string& executablePath, const OrmelOptions& ormelOptions);

/// The environment of the server's process.
std::map<std::string, std::string> buildAppServerEnvironment(const OrmelOptions& ormelOptions,
                                                             const std::vector<std::string>& pathDirectories);

/// Puts `directories` ahead of the `PATH` of `environment`, which loses its other mentions of them.
void prependPathDirectories(const std::vector<std::string>& directories,
                            std::map<std::string, std::string>& environment);

/// `config` with the features switched on that the library cannot work without; see
/// `OrmelOptions::configEnablingRequiredSDKFeatures`.
std::map<std::string, JSONValue> configJSONEnablingRequiredSDKFeatures(std::map<std::string, JSONValue> config);

/// The same value as JSON; an integer beyond 2^53 takes the nearest double.
JSONValue configValueToJSONValue(const OrmelConfigValue& value);

/// Adds a "key.path=value" text to `overrides` for each leaf of `value`, which stands at the dotted path `prefix`.
/// Keys are visited in ascending order of their bytes and go into the path as they are. Fails at the first value
/// that has no such form with `OrmelProcessError` of the kind `invalidConfigOverride`.
void flattenConfigOverridesForCLI(const OrmelConfigValue& value, const std::string& prefix,
                                  std::vector<std::string>& overrides);

/// `value`, which stands at `path`, in TOML on one line. Fails as `flattenConfigOverridesForCLI`.
std::string toTomlValueForCLI(const OrmelConfigValue& value, const std::string& path);

/// Writes a JSON array of one text, in which no slash is escaped.
using JSONTextArrayWriter = std::function<std::string(std::string_view text)>;

std::string writeJSONTextArray(std::string_view text);

/// `text` as a quoted text that JSON and TOML read alike. `write` stands for the JSON writer; if it fails, only the
/// double quotes in `text` are escaped.
std::string quoteForTomlCLI(std::string_view text, const JSONTextArrayWriter& write = writeJSONTextArray);

}  // namespace ormel::detail
