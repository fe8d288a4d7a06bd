#include "ormel-simulator/Requests/RequestParams.h"

#include <algorithm>
#include <cmath>

#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

namespace {

constexpr std::string_view textDemand = "must be a text that is not empty";
constexpr std::string_view flagDemand = "must be true or false";
constexpr std::string_view textsDemand = "must be a list of texts";
constexpr std::string_view objectsDemand = "must be a list of objects";
constexpr std::string_view flagsByNameDemand = "must be an object whose values are true or false";
constexpr double greatestCount = 1e15;

[[noreturn]] void refuse(std::string_view key, std::string_view demand) {
  throw Refusal(invalidParams, std::string(key) + " " + std::string(demand));
}

std::string listed(std::initializer_list<std::string_view> words) {
  std::string text;
  for (const std::string_view word : words) text += (text.empty() ? "" : ", ") + std::string(word);
  return text;
}

}  // namespace

RequestParams::RequestParams(const JSONValue& params) : params_(params) {
  if (!params.isNull() && !params.objectValue()) throw Refusal(invalidParams, "params must be an object");
}

const JSONValue* RequestParams::given(std::string_view key) const noexcept {
  const JSONValue* value = params_.find(key);
  return value && !value->isNull() ? value : nullptr;
}

const JSONValue& RequestParams::required(std::string_view key, std::string_view demand) const {
  const JSONValue* value = given(key);
  if (!value) refuse(key, demand);
  return *value;
}

std::string RequestParams::text(std::string_view key) const {
  const auto text = required(key, textDemand).stringValue();
  if (!text || text->empty()) refuse(key, textDemand);
  return std::string(*text);
}

std::optional<std::string> RequestParams::textIfGiven(std::string_view key) const {
  return has(key) ? std::optional(text(key)) : std::nullopt;
}

std::string RequestParams::word(std::string_view key, std::initializer_list<std::string_view> words) const {
  const JSONValue* value = given(key);
  const auto text = value ? value->stringValue() : std::nullopt;
  if (!text || std::find(words.begin(), words.end(), *text) == words.end()) {
    refuse(key, "must be one of: " + listed(words));
  }
  return std::string(*text);
}

std::optional<std::string> RequestParams::wordIfGiven(std::string_view key,
                                                      std::initializer_list<std::string_view> words) const {
  return has(key) ? std::optional(word(key, words)) : std::nullopt;
}

bool RequestParams::requiredFlag(std::string_view key) const {
  const auto flag = required(key, flagDemand).boolValue();
  if (!flag) refuse(key, flagDemand);
  return *flag;
}

std::vector<std::string> RequestParams::texts(std::string_view key) const {
  const auto* elements = required(key, textsDemand).arrayValue();
  if (!elements) refuse(key, textsDemand);
  std::vector<std::string> found;
  for (const JSONValue& element : *elements) {
    const auto text = element.stringValue();
    if (!text) refuse(key, textsDemand);
    found.emplace_back(*text);
  }
  return found;
}

std::optional<std::vector<std::string>> RequestParams::textsIfGiven(std::string_view key) const {
  return has(key) ? std::optional(texts(key)) : std::nullopt;
}

std::vector<RequestParams> RequestParams::objects(std::string_view key) const {
  const auto* elements = required(key, objectsDemand).arrayValue();
  if (!elements) refuse(key, objectsDemand);
  std::vector<RequestParams> found;
  for (const JSONValue& element : *elements) {
    if (!element.objectValue()) refuse(key, objectsDemand);
    found.emplace_back(element);
  }
  return found;
}

std::map<std::string, bool> RequestParams::flagsByName(std::string_view key) const {
  const auto* members = required(key, flagsByNameDemand).objectValue();
  if (!members) refuse(key, flagsByNameDemand);
  std::map<std::string, bool> found;
  for (const auto& [name, value] : *members) {
    const auto flag = value.boolValue();
    if (!flag) refuse(key, flagsByNameDemand);
    found.emplace(name, *flag);
  }
  return found;
}

void RequestParams::checkTextsByName(std::string_view key) const {
  if (!has(key)) return;
  const auto* members = given(key)->objectValue();
  const bool fits = members && std::all_of(members->begin(), members->end(), [](const JSONMember& member) {
                      return member.value.stringValue().has_value();
                    });
  if (!fits) refuse(key, "must be an object whose values are texts");
}

std::optional<std::int64_t> RequestParams::countIfGiven(std::string_view key) const {
  if (!has(key)) return std::nullopt;
  const double number = given(key)->numberValue().value_or(0);
  if (number < 1 || number > greatestCount || std::trunc(number) != number) {
    refuse(key, "must be a whole number from 1 on");
  }
  return static_cast<std::int64_t>(number);
}

}  // namespace ormel::simulator
