#include "ormel-simulator/Catalogue/AppData.h"

namespace ormel::simulator {

const JSONValue& appDescriptions() {
  static const JSONValue value = JSONValue::decode(R"json([
  {"id": "almanac", "name": "Almanac", "description": "Days, moons and seasons", "connected": true,
   "runtimeName": "almanac", "distributionChannel": "public",
   "logoUrl": "https://almanac.example/logo.png", "logoUrlDark": "https://almanac.example/logo-dark.png",
   "iconAssets": {"small": "https://almanac.example/16.png"}, "iconDarkAssets": {"small": "https://almanac.example/16d.png"},
   "branding": {"category": "Nature", "developer": "Almanac Society"}, "appMetadata": {"version": "7"},
   "labels": {"tier": "free"},
   "tools": [
     {"name": "look_up", "title": "Look up", "description": "Tells what a day is known for", "isReadOnly": true},
     {"name": "mark", "title": "Mark", "description": "Marks a day", "isReadOnly": false}]},
  {"id": "harbour-log", "name": "Harbour Log", "description": "Who came in, and who went out", "connected": false,
   "installUrl": "https://harbour-log.example/install", "distributionChannel": "public",
   "tools": [{"name": "list_ships", "description": "Lists ships", "isReadOnly": true}]},
  {"id": "seed-exchange", "name": "Seed Exchange", "description": "Swaps seeds with neighbours", "connected": false,
   "installUrl": "https://seed-exchange.example/install", "distributionChannel": "public",
   "tools": [
     {"name": "offer", "description": "Offers seeds", "isReadOnly": false},
     {"name": "search", "description": "Looks for seeds", "isReadOnly": true}]},
  {"id": "letterbox", "name": "Letterbox", "description": "Letters, written and read", "connected": true,
   "runtimeName": "letterbox", "distributionChannel": "workspace",
   "tools": [
     {"name": "read", "description": "Reads a letter", "isReadOnly": true},
     {"name": "send", "description": "Sends a letter", "isEnabled": false, "disabledReason": "disabled_by_admin"}]},
  {"id": "weathercock", "name": "Weathercock", "description": "Where the wind comes from", "connected": true,
   "runtimeName": "weathercock", "distributionChannel": "public",
   "tools": [{"name": "wind", "description": "Tells the wind", "isReadOnly": true}]}
])json");
  return value;
}

}  // namespace ormel::simulator
