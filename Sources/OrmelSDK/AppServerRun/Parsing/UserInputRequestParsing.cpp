#include <cstddef>
#include <vector>

#include "OrmelSDK/AppServerRun/Parsing/ServerRequestParsing.h"
#include "OrmelSDK/AppServerRun/Parsing/ThreadItemWords.h"
#include "OrmelSDK/Base/UUID.h"
#include "OrmelSDK/Coding/JSONMembers.h"
#include "OrmelSDK/Text/TrimmedText.h"

namespace ormel::detail {

namespace {

JSONValue option(std::string_view label, const std::optional<std::string_view>& description, bool isOther) {
  JSONObjectBuilder object;
  object.set("title", label).set("label", label);
  const auto shown = trimmed(description.value_or(""));
  if (!shown.empty()) object.set("description", shown);
  return object.set("recommended", false).set("requiresCustomInput", isOther).set("isOther", isOther).build();
}

JSONValue options(const JSONObject& question, bool hasOther) {
  std::vector<JSONValue> list;
  if (const JSONArray* given = arrayMember(question, {"options"})) {
    std::size_t place = 0;
    for (const JSONValue& element : *given) {
      ++place;
      const JSONObject* object = element.objectValue();
      if (!object) continue;
      const std::string label = textMember(*object, {"label"}, "Option " + std::to_string(place));
      list.push_back(option(label, textViewMember(*object, {"description"}), false));
    }
  }
  if (hasOther) list.push_back(option("Other", std::nullopt, true));
  return JSONValue::array(list);
}

JSONValue question(const JSONObject& from) {
  const auto id = textViewMember(from, {"id"});
  const std::string prompt = textMember(from, {"question", "header"}, "Please choose an option");
  const bool hasOther = booleanMember(from, {"isOther"}).value_or(false);
  return JSONObjectBuilder()
      .set("id", id ? std::string(*id) : UUID::random().text())
      .set("prompt", prompt)
      .set("question", prompt)
      .set("header", textViewMember(from, {"header"}).value_or(""))
      .set("isOther", hasOther)
      .set("isSecret", booleanMember(from, {"isSecret", "is_secret"}).value_or(false))
      .set("options", options(from, hasOther))
      .build();
}

}  // namespace

JSONValue requestUserInputArguments(const JSONObject& params) {
  std::vector<JSONValue> questions;
  if (const JSONArray* given = arrayMember(params, {"questions"})) {
    for (const JSONValue& element : *given) {
      if (const JSONObject* object = element.objectValue()) questions.push_back(question(*object));
    }
  }
  const auto autoResolutionMilliseconds =
      firstMember(params, {"autoResolutionMs", "auto_resolution_ms"}, parseOptionalInt);
  return JSONObjectBuilder()
      .set("questions", JSONValue::array(questions))
      .set("isBlocking", booleanMember(params, {"isBlocking", "is_blocking"}).value_or(true))
      .set("autoResolutionMs", autoResolutionMilliseconds)
      .build();
}

}  // namespace ormel::detail
