#include "ormel-simulator/Catalogue/PluginData.h"

namespace ormel::simulator {

const JSONValue& builtInMarketplaces() {
  static const JSONValue value = JSONValue::decode(R"json([
  {"name": "garden", "kind": "local", "path": "/ormel/marketplaces/garden/marketplace.json",
   "displayName": "The Garden", "plugins": [
    {"summary": {
       "name": "herbarium", "version": "1.4.0", "source": {"type": "local", "path": "/ormel/plugins/garden/herbarium"},
       "installPolicy": "AVAILABLE", "authPolicy": "ON_INSTALL", "availability": "AVAILABLE",
       "mustShowInstallationInterstitial": false, "keywords": ["plants", "notes"],
       "interface": {
         "displayName": "Herbarium", "shortDescription": "Names plants", "developerName": "Ferrow & Daughters",
         "longDescription": "Names plants, and keeps notes of where they grow.", "category": "Nature",
         "capabilities": ["read", "write"], "websiteUrl": "https://ferrow.example/herbarium",
         "privacyPolicyUrl": "https://ferrow.example/privacy", "termsOfServiceUrl": "https://ferrow.example/terms",
         "defaultPrompt": ["Which plant is this?"], "brandColor": "#3a7d44",
         "logoUrl": "https://ferrow.example/herbarium.png"}},
     "featured": true, "description": "Names plants, and keeps notes of where they grow.",
     "skills": [
       {"name": "name-a-plant", "description": "Names a plant by its leaves", "shortDescription": "Names a plant",
        "interface": {"displayName": "Name a plant", "brandColor": "#3a7d44", "defaultPrompt": "Name this plant"}},
       {"name": "press-a-leaf", "description": "Describes a leaf for the collection"}],
     "hooks": [
       {"key": "herbarium/label", "eventName": "postToolUse", "handlerType": "command", "matcher": "edit",
        "command": "label-leaves", "timeoutSec": 10, "statusMessage": "Labelling leaves"}],
     "apps": ["seed-exchange"], "mcpServers": ["leaf-index"]},
    {"summary": {
       "name": "compost", "version": "0.9.2",
       "source": {"type": "git", "url": "https://code.ferrow.example/compost.git", "refName": "main",
                  "sha": "3f2c9d0b7a61e58442d0c19be77a5f6d8e90b1a2", "path": "plugin"},
       "installPolicy": "INSTALLED_BY_DEFAULT", "installPolicySource": "WORKSPACE_SETTING", "authPolicy": "ON_USE",
       "availability": "AVAILABLE", "keywords": ["cleaning"],
       "interface": {"displayName": "Compost", "shortDescription": "Tidies what is left over", "category": "Tools"}},
     "description": "Turns leftovers of a build into nothing.",
     "skills": [{"name": "tidy", "description": "Removes what no build needs any more"}],
     "hooks": [], "apps": [], "mcpServers": []}]},
  {"name": "harbour", "kind": "vertical", "displayName": "The Harbour", "plugins": [
    {"summary": {
       "name": "tides", "remotePluginId": "plugin-tides", "version": "3.0.1", "source": {"type": "remote"},
       "installPolicy": "AVAILABLE", "authPolicy": "ON_USE", "availability": "AVAILABLE", "keywords": ["sea"],
       "mustShowInstallationInterstitial": true,
       "interface": {"displayName": "Tides", "shortDescription": "Knows when the water comes", "category": "Nature",
                     "developerName": "Quayside Works"}},
     "featured": true, "description": "Knows when the water comes, and when it goes.",
     "skills": [{"name": "read-a-tide-table", "description": "Reads tables of tides",
                 "contents": "# Reading a tide table\n\nLook for the harbour first, then for the day.\n"}],
     "hooks": [], "apps": ["harbour-log"], "mcpServers": ["tide-gauge"]},
    {"summary": {
       "name": "salvage", "remotePluginId": "plugin-salvage", "version": "1.0.0", "source": {"type": "remote"},
       "installPolicy": "NOT_AVAILABLE", "authPolicy": "ON_INSTALL", "availability": "DISABLED_BY_ADMIN",
       "disabledReason": "disabled_by_admin", "eligiblePlanTypes": ["orchard"], "keywords": [],
       "interface": {"displayName": "Salvage", "shortDescription": "Brings up what was lost"}},
     "description": "Brings up what was lost.",
     "skills": [], "hooks": [], "apps": [], "mcpServers": []}]},
  {"name": "workspace", "kind": "workspace-directory", "displayName": "Your workspace", "plugins": [
    {"summary": {
       "name": "minutes", "remotePluginId": "plugin-minutes", "version": "2.2.0", "source": {"type": "remote"},
       "installPolicy": "AVAILABLE", "installPolicySource": "WORKSPACE_SETTING", "authPolicy": "ON_USE",
       "availability": "AVAILABLE", "keywords": ["meetings"],
       "interface": {"displayName": "Minutes", "shortDescription": "Writes down who said what"}},
     "description": "Writes down who said what.",
     "skills": [{"name": "take-minutes", "description": "Writes the minutes of a meeting",
                 "contents": "# Taking minutes\n\nNames first, then decisions.\n"}],
     "hooks": [], "apps": [], "mcpServers": []}]}
])json");
  return value;
}

}  // namespace ormel::simulator
