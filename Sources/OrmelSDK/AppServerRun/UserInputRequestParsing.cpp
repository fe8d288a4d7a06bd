#include <cstddef>
#include <vector>

#include "OrmelSDK/AppServerRun/JSONFields.h"
#include "OrmelSDK/AppServerRun/ServerRequestParsing.h"
#include "OrmelSDK/AppServerRun/ThreadItemWords.h"
#include "OrmelSDK/TrimmedText.h"
#include "OrmelSDK/UUID.h"

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
  if (const JSONArray* given = arrayUnder(question, {"options"})) {
    std::size_t place = 0;
    for (const JSONValue& element : *given) {
      ++place;
      const JSONObject* object = element.objectValue();
      if (!object) continue;
      const std::string label = ownTextUnder(*object, {"label"}, "Option " + std::to_string(place));
      list.push_back(option(label, textUnder(*object, {"description"}), false));
    }
  }
  if (hasOther) list.push_back(option("Other", std::nullopt, true));
  return JSONValue::array(list);
}

JSONValue question(const JSONObject& from) {
  const auto id = textUnder(from, {"id"});
  const std::string prompt = ownTextUnder(from, {"question", "header"}, "Please choose an option");
  const bool hasOther = booleanUnder(from, {"isOther"}).value_or(false);
  return JSONObjectBuilder()
      .set("id", id ? std::string(*id) : UUID::random().text())
      .set("prompt", prompt)
      .set("question", prompt)
      .set("header", textUnder(from, {"header"}).value_or(""))
      .set("isOther", hasOther)
      .set("isSecret", booleanUnder(from, {"isSecret", "is_secret"}).value_or(false))
      .set("options", options(from, hasOther))
      .build();
}

}  // namespace

JSONValue requestUserInputArguments(const JSONObject& params) {
  std::vector<JSONValue> questions;
  if (const JSONArray* given = arrayUnder(params, {"questions"})) {
    for (const JSONValue& element : *given) {
      if (const JSONObject* object = element.objectValue()) questions.push_back(question(*object));
    }
  }
  return JSONObjectBuilder()
      .set("questions", JSONValue::array(questions))
      .set("isBlocking", booleanUnder(params, {"isBlocking", "is_blocking"}).value_or(true))
      .set("autoResolutionMs", firstUnder(params, {"autoResolutionMs", "auto_resolution_ms"}, parseOptionalInt))
      .build();
}

}  // namespace ormel::detail
