#include "ormel-simulator/Catalogue/McpServerData.h"

namespace ormel::simulator {

const JSONValue& mcpServerDescriptions() {
  static const JSONValue value = JSONValue::decode(R"json([
  {"name": "almanac", "authStatus": "unsupported",
   "serverInfo": {"name": "almanac", "title": "Almanac", "version": "7.0.0"},
   "tools": {
     "look_up": {"name": "look_up", "title": "Look up", "description": "Tells what a day is known for",
                 "inputSchema": {"type": "object", "properties": {"day": {"type": "string"}}, "required": ["day"]}},
     "moon": {"name": "moon", "description": "Tells the phase of the moon", "inputSchema": {"type": "object"}}},
   "resources": [
     {"uri": "almanac://seasons", "name": "Seasons", "mimeType": "text/plain"},
     {"uri": "almanac://moon.png", "name": "The moon", "mimeType": "image/png"}],
   "resourceTemplates": [{"uriTemplate": "almanac://day/{day}", "name": "A day"}],
   "contents": {
     "almanac://seasons": {"mimeType": "text/plain", "text": "Spring, summer, autumn, winter.\n"},
     "almanac://moon.png": {"mimeType": "image/png", "blob": "iVBORw0KGgo=", "_meta": {"phase": "full"}}}},
  {"name": "letterbox", "authStatus": "bearerToken",
   "serverInfo": {"name": "letterbox", "version": "2.1.0"},
   "tools": {"read": {"name": "read", "description": "Reads a letter", "inputSchema": {"type": "object"}}},
   "resources": [], "resourceTemplates": [], "contents": {}},
  {"name": "orchard", "authStatus": "oAuth",
   "serverInfo": {"name": "orchard", "version": "0.4.0"},
   "tools": {"pick": {"name": "pick", "description": "Picks fruit", "inputSchema": {"type": "object"}}},
   "resources": [{"uri": "orchard://trees", "name": "Trees", "mimeType": "text/plain"}], "resourceTemplates": [],
   "contents": {"orchard://trees": {"mimeType": "text/plain", "text": "Four apples, two pears.\n"}}},
  {"name": "rusty-pump", "authStatus": "unsupported", "fault": "the pump did not start: no such program",
   "tools": {}, "resources": [], "resourceTemplates": [], "contents": {}},
  {"name": "leaf-index", "plugin": "herbarium@garden", "authStatus": "unsupported",
   "serverInfo": {"name": "leaf-index", "version": "1.4.0"},
   "tools": {"compare": {"name": "compare", "description": "Compares leaves", "inputSchema": {"type": "object"}}},
   "resources": [], "resourceTemplates": [], "contents": {}},
  {"name": "tide-gauge", "plugin": "tides@harbour", "authStatus": "unsupported",
   "serverInfo": {"name": "tide-gauge", "version": "3.0.1"},
   "tools": {"level": {"name": "level", "description": "Tells the level", "inputSchema": {"type": "object"}}},
   "resources": [], "resourceTemplates": [], "contents": {}}
])json");
  return value;
}

}  // namespace ormel::simulator
