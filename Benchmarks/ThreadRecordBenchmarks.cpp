#include <benchmark/benchmark.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>
#include <vector>

#include "Fastest.h"
#include "OrmelSDK/JSONValue.h"
#include "OrmelSDK/RecordCoding.h"
#include "OrmelSDK/ThreadRecords.h"
#include "ThreadRecordSamples.h"

// The same records as another library's macros define them. They are smaller than ours: no optional fields, one
// spelling of each key, and texts in place of enumerations.
namespace byMacro {

struct UserInput {
  std::string type;
  std::string text;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(UserInput, type, text)

struct UserMessage {
  std::string id;
  std::vector<UserInput> content;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(UserMessage, id, content)

struct Reasoning {
  std::string id;
  std::vector<std::string> summary;
  std::vector<std::string> content;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Reasoning, id, summary, content)

struct CommandExecution {
  std::string id;
  std::string command;
  std::string cwd;
  std::string processId;
  std::vector<nlohmann::json> command_actions;
  std::string aggregatedOutput;
  std::int64_t exitCode = 0;
  std::string status;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(CommandExecution, id, command, cwd, processId, command_actions,
                                                aggregatedOutput, exitCode, status)

struct AgentMessage {
  std::string id;
  std::string text;
  std::string phase;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(AgentMessage, id, text, phase)

struct Item {
  std::variant<UserMessage, Reasoning, CommandExecution, AgentMessage> value;
};

void from_json(const nlohmann::json& json, Item& item) {
  const auto& type = json.at("type").get_ref<const std::string&>();
  if (type == "userMessage") {
    item.value = json.get<UserMessage>();
  } else if (type == "reasoning") {
    item.value = json.get<Reasoning>();
  } else if (type == "commandExecution") {
    item.value = json.get<CommandExecution>();
  } else {
    item.value = json.get<AgentMessage>();
  }
}

void to_json(nlohmann::json& json, const Item& item) {
  std::visit([&](const auto& value) { json = value; }, item.value);
}

struct Turn {
  std::string id;
  std::string itemsView;
  std::string status;
  double startedAt = 0;
  double completedAt = 0;
  std::int64_t durationMs = 0;
  std::vector<Item> items;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Turn, id, itemsView, status, startedAt, completedAt, durationMs, items)

struct Status {
  std::string type;
  std::vector<std::string> activeFlags;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Status, type, activeFlags)

struct GitInfo {
  std::string sha;
  std::string branch;
  std::string originUrl;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(GitInfo, sha, branch, originUrl)

struct Thread {
  std::string id;
  std::string sessionId;
  std::string preview;
  bool ephemeral = false;
  std::string modelProvider;
  double createdAt = 0;
  double updatedAt = 0;
  Status status;
  std::string path;
  std::string cwd;
  std::string cliVersion;
  nlohmann::json source;
  GitInfo gitInfo;
  std::vector<Turn> turns;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Thread, id, sessionId, preview, ephemeral, modelProvider, createdAt,
                                                updatedAt, status, path, cwd, cliVersion, source, gitInfo, turns)

struct ReadResponse {
  Thread thread;
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(ReadResponse, thread)

}  // namespace byMacro

namespace {

using ormel::JSONValue;

const std::string& reply() {
  constexpr std::size_t megabyte = 1'000'000;
  static const std::string text = ormel::benchmarks::threadReadReply(megabyte);
  return text;
}

void count(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(reply().size()));
}

void threadReadToRecords(benchmark::State& state) {
  const JSONValue value = JSONValue::decode(reply());
  for (auto _ : state) benchmark::DoNotOptimize(ormel::decode<ormel::ThreadReadResponse>(value));
  count(state);
}
BENCHMARK(threadReadToRecords)->Apply(ormel::benchmarks::reportFastest);

void threadReadByMacroRecords(benchmark::State& state) {
  const auto value = nlohmann::json::parse(reply());
  for (auto _ : state) benchmark::DoNotOptimize(value.get<byMacro::ReadResponse>());
  count(state);
}
BENCHMARK(threadReadByMacroRecords)->Apply(ormel::benchmarks::reportFastest);

// What anyone who has the value must do at least: visit every key and every text.
std::size_t walk(const JSONValue& value) {
  if (const auto* object = value.objectValue()) {
    std::size_t sum = 0;
    for (const auto& [key, member] : *object) sum += key.size() + walk(member);
    return sum;
  }
  if (const auto* array = value.arrayValue()) {
    std::size_t sum = 0;
    for (const auto& element : *array) sum += walk(element);
    return sum;
  }
  const auto text = value.stringValue();
  return text ? text->size() : 1;
}

void threadReadByWalking(benchmark::State& state) {
  const JSONValue value = JSONValue::decode(reply());
  for (auto _ : state) benchmark::DoNotOptimize(walk(value));
  count(state);
}
BENCHMARK(threadReadByWalking)->Apply(ormel::benchmarks::reportFastest);

// And what records that own their texts must do besides: copy each text.
void copyTexts(const JSONValue& value, std::vector<std::string>& texts) {
  if (const auto* object = value.objectValue()) {
    for (const auto& [key, member] : *object) copyTexts(member, texts);
  } else if (const auto* array = value.arrayValue()) {
    for (const auto& element : *array) copyTexts(element, texts);
  } else if (const auto text = value.stringValue()) {
    texts.emplace_back(*text);
  }
}

void threadReadByCopyingTexts(benchmark::State& state) {
  const JSONValue value = JSONValue::decode(reply());
  for (auto _ : state) {
    std::vector<std::string> texts;
    copyTexts(value, texts);
    benchmark::DoNotOptimize(texts.data());
  }
  count(state);
}
BENCHMARK(threadReadByCopyingTexts)->Apply(ormel::benchmarks::reportFastest);

void threadReadFromRecords(benchmark::State& state) {
  const auto response = ormel::decode<ormel::ThreadReadResponse>(JSONValue::decode(reply()));
  for (auto _ : state) benchmark::DoNotOptimize(ormel::encode(response));
  count(state);
}
BENCHMARK(threadReadFromRecords)->Apply(ormel::benchmarks::reportFastest);

}  // namespace
