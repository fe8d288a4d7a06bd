#include "EnvelopeHandler.h"

#include <optional>
#include <utility>

#include "Frame.h"
#include "JSONRPC.h"

namespace tessella {

using ormel::JSONValue;

namespace {

std::optional<std::string_view> textViewMember(const JSONValue& object, std::string_view key) {
  const auto* value = object.find(key);
  return value ? value->stringValue() : std::nullopt;
}

/// Takes as long for a nearly right token as for a wholly wrong one.
bool sameToken(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < left.size(); ++i) difference |= static_cast<unsigned>(left[i] ^ right[i]);
  return difference == 0;
}

std::string encodeReply(const JSONValue& id, const JSONValue& result) {
  return JSONValue::object({{"id", id}, {"result", result}}).encode();
}

JSONValue refusal(std::string_view reason) { return errorResponse(JSONValue(), errorcode::invalidRequest, reason); }

}  // namespace

EnvelopeHandler::EnvelopeHandler(const MCPServer& server, std::string token)
    : server_(server), token_(std::move(token)) {}

std::string EnvelopeHandler::reply(std::string_view body, Session& session) const {
  JSONValue envelope;
  try {
    envelope = JSONValue::decode(body);
  } catch (const ormel::DecodingError& error) {
    // The request that this answers cannot be known. The bridge reports an invalid response and goes on.
    return encodeReply(JSONValue(), errorResponse(JSONValue(), errorcode::parseError, error.what()));
  }

  const auto id = idOf(envelope);
  const auto* params = envelope.find("params");
  if (!id.numberValue() || textViewMember(envelope, "method") != "tessellaMCP" || !params) {
    return encodeReply(id, refusal("The frame holds no bridge envelope."));
  }
  auto encoded = encodeReply(id, answer(*params, session));
  if (encoded.size() <= largestReplyBody) return encoded;
  const auto* message = params->find("message");
  return encodeReply(id, errorResponse(message ? idOf(*message) : JSONValue(), errorcode::internalError,
                                       "The answer is larger than a bridge accepts."));
}

JSONValue EnvelopeHandler::answer(const JSONValue& params, Session& session) const {
  const auto token = textViewMember(params, "token");
  const auto workspacePath = textViewMember(params, "workspacePath");
  const auto* message = params.find("message");
  if (!token || !workspacePath || !message) return refusal("The envelope's params are not complete.");
  if (!sameToken(*token, token_)) return errorResponse(idOf(*message), errorcode::wrongToken, "The token is wrong.");

  session.workspacePath = *workspacePath;
  return server_.answer(*message, session).value_or(JSONValue());
}

}  // namespace tessella
