#include "Elicitations.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ApprovalQuestion.h"
#include "AskedQuestion.h"
#include "FormQuestion.h"
#include "OrmelSDK/JSON/CodingErrors.h"
#include "Texts.h"

namespace ormel::chat {

namespace {

std::optional<JSONValue> numberIn(const std::string& text) {
  try {
    JSONValue value = JSONValue::decode(text);
    if (value.numberValue()) return value;
  } catch (const DecodingError&) {
    return std::nullopt;
  }
  return std::nullopt;
}

/// The answer in the type that the schema of its field asks for; nothing if it has no such form.
std::optional<JSONValue> typedAnswer(const JSONValue& schema, const std::string& text) {
  const std::string type = textViewMember(schema, "type", "string");
  if (type == "boolean") return JSONValue(text == "yes");
  if (type == "number") return numberIn(text);
  if (type != "integer") return JSONValue(text);
  const auto number = numberIn(text);
  const bool isWhole = number && text.find_first_not_of("-0123456789") == text.npos;
  return isWhole ? number : std::nullopt;
}

std::vector<FormOption> optionsOf(const JSONValue& schema) {
  if (textViewMember(schema, "type") == "boolean") return {{"yes", "", false}, {"no", "", false}};
  std::vector<FormOption> options;
  const JSONValue* values = schema.find("enum");
  if (!values || !values->arrayValue()) return options;
  for (const JSONValue& value : *values->arrayValue()) {
    options.push_back({std::string(value.stringValue().value_or("")), "", false});
  }
  return options;
}

/// The properties of the form, in the order of their names: the members of an object have none of their own.
std::vector<FormField> fieldsOf(const JSONValue& formSchema) {
  std::vector<FormField> fields;
  const JSONValue* properties = formSchema.find("properties");
  if (!properties || !properties->objectValue()) return fields;
  for (const auto& [name, schema] : *properties->objectValue()) {
    FormField field;
    field.id = name;
    field.prompt = textViewMember(schema, "description", textViewMember(schema, "title", name));
    field.options = optionsOf(schema);
    field.accepts = [ofField = schema](const std::string& text) { return typedAnswer(ofField, text).has_value(); };
    fields.push_back(std::move(field));
  }
  std::sort(fields.begin(), fields.end(), [](const auto& left, const auto& right) { return left.id < right.id; });
  return fields;
}

bool hasAllRequired(const JSONValue& formSchema, const FormAnswers& answers) {
  const JSONValue* required = formSchema.find("required");
  if (!required || !required->arrayValue()) return true;
  return std::all_of(required->arrayValue()->begin(), required->arrayValue()->end(), [&](const JSONValue& name) {
    return answers.contains(std::string(name.stringValue().value_or("")));
  });
}

McpServerElicitationResponse responseTo(const JSONValue& formSchema, const std::optional<FormAnswers>& answers) {
  McpServerElicitationResponse response;
  if (!answers) return response;
  response.action = McpServerElicitationAction::decline;
  if (!hasAllRequired(formSchema, *answers)) return response;
  const JSONValue* properties = formSchema.find("properties");
  JSONObjectBuilder content;
  for (const auto& [name, text] : *answers) content.set(name, typedAnswer(*properties->find(name), text));
  response.action = McpServerElicitationAction::accept;
  response.content = content.build();
  return response;
}

Task<McpServerElicitationResponse> fillIn(std::shared_ptr<Inbox> inbox, std::vector<Quote> about, JSONValue schema) {
  auto fields = fieldsOf(schema);
  if (fields.empty()) co_return McpServerElicitationResponse();
  const OneShot<McpServerElicitationResponse> response("form");
  auto receiver = [schema, resolver = response.resolver()](const std::optional<FormAnswers>& answers) {
    resolver.resume(responseTo(schema, answers));
  };
  auto question = std::make_shared<FormQuestion>("An MCP server asks you to fill in a form:", std::move(about),
                                                 std::move(fields), std::move(receiver));
  const AskedQuestion asked(inbox, std::move(question));
  McpServerElicitationResponse given = co_await response.wait();
  co_return given;
}

Task<McpServerElicitationResponse> openPage(std::shared_ptr<Inbox> inbox, ApprovalSubject subject) {
  const OneShot<Verdict> verdict("page");
  auto question = std::make_shared<ApprovalQuestion>(std::move(subject), verdict.resolver());
  const AskedQuestion asked(inbox, std::move(question));
  const Verdict given = co_await verdict.wait();
  McpServerElicitationResponse response;
  response.action = given == Verdict::no ? McpServerElicitationAction::decline : McpServerElicitationAction::accept;
  co_return response;
}

Task<McpServerElicitationResponse> elicit(const std::shared_ptr<Inbox>& inbox,
                                          const McpServerElicitationRequest& request) {
  const auto fill = [&](const auto& form) {
    return fillIn(inbox, {{"server", request.serverName}, {"message", form.message}}, form.requestedSchema);
  };
  return visit(
      request.mode, [&](const McpServerFormElicitation& form) { return fill(form); },
      [&](const McpServerVelnorFormElicitation& form) { return fill(form); },
      [&](const McpServerURLElicitation& page) {
        ApprovalSubject subject("An MCP server asks you to open a page:", false);
        subject.matter = {{"page", page.url}};
        subject.circumstances = {{"server", request.serverName}, {"message", page.message}};
        subject.advice = "Open it yourself, and then agree.";
        return openPage(inbox, std::move(subject));
      });
}

}  // namespace

void installElicitations(ThreadOptions& options, std::shared_ptr<Inbox> inbox) {
  options.mcpServerElicitationHandler = [inbox = std::move(inbox)](const McpServerElicitationRequest& request) {
    return elicit(inbox, request);
  };
}

}  // namespace ormel::chat
