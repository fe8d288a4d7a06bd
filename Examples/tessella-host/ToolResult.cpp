#include "ToolResult.h"

namespace tessella {

using ormel::JSONValue;

namespace {

JSONValue textContent(std::string_view text) {
  return JSONValue::array({JSONValue::object({{"type", "text"}, {"text", text}})});
}

}  // namespace

JSONValue textResult(std::string_view text) { return JSONValue::object({{"content", textContent(text)}}); }

JSONValue failedResult(std::string_view text) {
  return JSONValue::object({{"content", textContent(text)}, {"isError", true}});
}

JSONValue structuredResult(std::string_view text, const JSONValue& structured) {
  return JSONValue::object({{"content", textContent(text)}, {"structuredContent", structured}});
}

}  // namespace tessella
