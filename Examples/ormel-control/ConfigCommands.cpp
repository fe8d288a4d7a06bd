#include "ConfigCommands.h"

#include <optional>
#include <utility>

#include "OrmelSDK/Records/ConfigRecords.h"
#include "Values.h"

namespace ormel::control {

namespace {

/// The whole configuration; the record of the call has only the parts that the library reads.
Task<JSONValue> wholeConfig(Ormel ormel, std::string directory) {
  JSONObjectBuilder params;
  params.set("includeLayers", false).set("cwd", directory);
  JSONValue built = params.build();
  const JSONValue response = co_await ormel.performRPC<JSONValue>("config/read", std::move(built));
  const JSONValue* config = response.find("config");
  if (!config || !config->objectValue()) throw Error("The server's reply to config/read has no config.");
  co_return *config;
}

std::string quotedIfNeeded(std::string_view key) {
  const bool isPlain = !key.empty() && key.find('.') == key.npos && key.front() != '"';
  return isPlain ? std::string(key) : "\"" + std::string(key) + "\"";
}

void addRows(Table& table, const std::string& path, const JSONValue& value) {
  const JSONObject* object = value.objectValue();
  if (!object || (object->empty() && !path.empty())) {
    table.rows.push_back({path, plainText(value)});
    return;
  }
  for (const JSONMember& member : sortedMembers(*object)) {
    addRows(table, (path.empty() ? "" : path + ".") + quotedIfNeeded(member.key), member.value);
  }
}

}  // namespace

std::vector<std::string> keysOfPath(const std::string& path) {
  std::vector<std::string> keys;
  std::string_view rest = path;
  for (;;) {
    const bool isQuoted = rest.starts_with('"');
    if (isQuoted) rest.remove_prefix(1);
    const std::size_t end = rest.find(isQuoted ? '"' : '.');
    const std::string_view key = rest.substr(0, end);
    if ((isQuoted && end == rest.npos) || (!isQuoted && key.empty())) throw Error("This is no key: " + path);
    keys.emplace_back(key);
    if (end == rest.npos) return keys;
    rest.remove_prefix(end + (isQuoted ? 1 : 0));
    if (rest.empty()) return keys;
    if (rest.front() != '.') throw Error("This is no key: " + path);
    rest.remove_prefix(1);
  }
}

Task<Report> listConfig(Server server, std::string directory) {
  Report report;
  report.document = co_await wholeConfig(server.ormel, std::move(directory));
  Table table{{{"KEY", true}, "VALUE"}, {}, "The configuration is empty."};
  addRows(table, "", report.document);
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> getConfig(Server server, std::string directory, std::string path) {
  const std::vector<std::string> keys = keysOfPath(path);
  JSONValue value = co_await wholeConfig(server.ormel, std::move(directory));
  for (const std::string& key : keys) {
    const JSONValue* found = value.find(key);
    if (!found) throw Error("The configuration has no " + path + ".");
    value = JSONValue(*found);
  }
  Report report;
  report.text = plainText(value) + "\n";
  report.document = std::move(value);
  co_return report;
}

Task<Report> setConfig(Server server, std::string path, JSONValue value) {
  co_await server.ormel.writeConfigValue(path, value, ConfigMergeStrategy::replace);
  co_return told(path + " is " + value.encode() + ".");
}

}  // namespace ormel::control
