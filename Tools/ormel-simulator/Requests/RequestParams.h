#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// The params of a request, read strictly: a value of another kind than asked for is a `Refusal` that names its key.
/// JSON null counts as not given. Lives no longer than the params.
class RequestParams {
 public:
  /// Params may be absent, which is the same as an empty object.
  explicit RequestParams(const JSONValue& params);

  const JSONValue& json() const noexcept { return params_; }
  bool has(std::string_view key) const noexcept { return given(key) != nullptr; }

  /// A text that is not empty.
  std::string text(std::string_view key) const;
  std::optional<std::string> textIfGiven(std::string_view key) const;

  /// One of the words.
  std::string word(std::string_view key, std::initializer_list<std::string_view> words) const;
  std::optional<std::string> wordIfGiven(std::string_view key, std::initializer_list<std::string_view> words) const;

  bool requiredFlag(std::string_view key) const;
  /// False if it is not given.
  bool flag(std::string_view key) const { return has(key) && requiredFlag(key); }

  std::vector<std::string> texts(std::string_view key) const;
  std::optional<std::vector<std::string>> textsIfGiven(std::string_view key) const;

  /// The objects of a list.
  std::vector<RequestParams> objects(std::string_view key) const;

  std::map<std::string, bool> flagsByName(std::string_view key) const;
  /// Only looks whether it is an object of texts, where it is given.
  void checkTextsByName(std::string_view key) const;

  /// A whole number from 1 on.
  std::optional<std::int64_t> countIfGiven(std::string_view key) const;

 private:
  const JSONValue* given(std::string_view key) const noexcept;
  const JSONValue& required(std::string_view key, std::string_view demand) const;

  JSONValue params_;
};

}  // namespace ormel::simulator
