#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::benchmarks {

inline std::size_t touch(std::string_view text) {
  if (text.empty()) return 0;
  return text.size() + static_cast<unsigned char>(text.front()) + static_cast<unsigned char>(text.back());
}

/// The cost of reading a value without keeping anything: the walk meets every member, reads every leaf, and looks at
/// both ends of every key and text.
inline std::size_t walk(const JSONValue& value) {
  std::size_t sum = 1;
  if (const auto* object = value.objectValue()) {
    for (const auto& [key, member] : *object) sum += touch(key) + walk(member);
  } else if (const auto* array = value.arrayValue()) {
    for (const auto& element : *array) sum += walk(element);
  } else if (const auto text = value.stringValue()) {
    sum += touch(*text);
  } else if (const auto number = value.numberValue()) {
    sum += *number != 0;
  } else if (const auto boolean = value.boolValue()) {
    sum += *boolean;
  }
  return sum;
}

inline void collectTexts(const JSONValue& value, std::vector<std::string>& texts) {
  if (const auto* object = value.objectValue()) {
    for (const auto& [key, member] : *object) collectTexts(member, texts);
  } else if (const auto* array = value.arrayValue()) {
    for (const auto& element : *array) collectTexts(element, texts);
  } else if (const auto text = value.stringValue()) {
    texts.emplace_back(*text);
  }
}

/// The least cost of owning the texts of a value: a walk that makes a string of each text, though not of keys, into a
/// list that has room for them.
inline std::size_t copyTexts(const JSONValue& value, std::vector<std::string>& texts) {
  texts.clear();
  collectTexts(value, texts);
  return texts.size();
}

}  // namespace ormel::benchmarks
