#include "BrowserTools.h"

#include <string>
#include <string_view>
#include <utility>

#include "PageFetcher.h"
#include "PageText.h"
#include "ToolResult.h"

namespace tessella {

using ormel::JSONValue;

namespace {

JSONValue property(std::string_view type, std::string_view description) {
  return JSONValue::object({{"type", type}, {"description", description}});
}

/// A schema of an object whose properties are all required.
JSONValue objectSchema(const JSONValue& properties) {
  std::vector<JSONValue> required;
  const auto members = properties.objectValue();
  for (const auto& member : *members) required.emplace_back(member.key);
  return JSONValue::object({{"type", "object"}, {"properties", properties}, {"required", JSONValue::array(required)}});
}

Tool makeTool(std::string_view name, std::string_view description, const JSONValue& arguments,
              decltype(Tool::call) call) {
  auto declaration =
      JSONValue::object({{"name", name}, {"description", description}, {"inputSchema", objectSchema(arguments)}});
  return {std::string(name), std::move(declaration), std::move(call)};
}

std::string_view textArgument(const JSONValue& arguments, std::string_view name) {
  const auto* argument = arguments.find(name);
  const auto text = argument ? argument->stringValue() : std::nullopt;
  if (!text) throw ToolFailure("The argument \"" + std::string(name) + "\" must be a text.");
  return *text;
}

JSONValue openPage(const JSONValue& arguments, const Session& session) {
  const std::string url(textArgument(arguments, "url"));
  const auto page = readPage(fetchPage(url, session.stop));
  const auto structured = JSONValue::object({{"url", url}, {"title", page.title}, {"text", page.text}});
  return structuredResult(page.title + "\n\n" + page.text, structured);
}

Tool openPageTool() {
  auto tool =
      makeTool("open_page", "Opens a page that this machine serves and gives its title and visible text.",
               JSONValue::object({{"url", property("string", "An http:// address of this machine.")}}), openPage);
  const auto output = JSONValue::object({{"url", property("string", "The address that was opened.")},
                                         {"title", property("string", "The page's title.")},
                                         {"text", property("string", "What a reader sees, one block a line.")}});
  ormel::JSONObjectBuilder declaration;
  const auto members = tool.declaration.objectValue();
  for (const auto& member : *members) declaration.set(member.key, member.value);
  tool.declaration = declaration.set("outputSchema", objectSchema(output)).build();
  return tool;
}

}  // namespace

std::vector<Tool> browserTools() {
  return {
      openPageTool(),
      makeTool("echo", "Gives back the text that it gets.",
               JSONValue::object({{"text", property("string", "Any text.")}}),
               [](const JSONValue& arguments, const Session&) { return textResult(textArgument(arguments, "text")); }),
      makeTool("workspace", "Tells for which workspace the agent is working.", JSONValue::object(),
               [](const JSONValue&, const Session& session) { return textResult(session.workspacePath); }),
      makeTool("close_page", "Closes the open page. Always fails here: this host keeps no page open.",
               JSONValue::object(),
               [](const JSONValue&, const Session&) -> JSONValue { throw ToolFailure("No page is open."); }),
  };
}

}  // namespace tessella
