#pragma once

#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "OrmelSDK/Ormel.h"
#include "Support/SimulatorScenario.h"
#include "Support/TemporaryDirectory.h"

namespace ormel::simulator {

/// The library, with the simulator's built-in agent as its server, without pauses.
class AgentConversation {
 public:
  /// With a state, threads outlive the agent's process.
  enum class State { forgotten, kept };

  explicit AgentConversation(State state = State::forgotten) {
    environment["ORMEL_SIMULATOR_PACE_MS"] = "0";
    environment["ORMEL_SIMULATOR_RECORD"] = recordPath();
    if (state == State::kept) {
      environment["ORMEL_SIMULATOR_STATE"] = statePath();
    } else {
      environment["ORMEL_SIMULATOR_FORGET"] = "1";
    }
  }

  Ormel ormel() const {
    OrmelOptions options;
    options.ormelPathOverride = testing::SimulatorScenario::executable();
    options.env = environment;
    return Ormel(options);
  }

  Thread startThread() const { return ormel().startThread(threadOptions); }

  std::string recordPath() const { return folder_ / "record"; }
  std::string statePath() const { return folder_ / "state"; }

  /// The methods of what the agent sent, or the client, in order.
  std::vector<std::string> methods(std::string_view event, std::string_view key) const {
    std::vector<std::string> found;
    std::ifstream file(recordPath());
    for (std::string line; std::getline(file, line);) {
      const JSONValue entry = JSONValue::decode(line);
      const JSONValue* text = *entry.find("event") == JSONValue(event) ? entry.find(key) : nullptr;
      if (!text) continue;
      const JSONValue message = JSONValue::decode(*text->stringValue());
      if (const JSONValue* method = message.find("method")) found.emplace_back(*method->stringValue());
    }
    return found;
  }
  std::vector<std::string> sentMethods() const { return methods("sent", "text"); }
  std::vector<std::string> receivedMethods() const { return methods("received", "line"); }

  std::map<std::string, std::string> environment;
  ThreadOptions threadOptions;

 private:
  testing::TemporaryDirectory folder_;
};

/// The items of one kind, in order.
template <typename Item>
std::vector<Item> itemsOf(const std::vector<ThreadItem>& items) {
  std::vector<Item> found;
  for (const ThreadItem& item : items) {
    if (const auto* one = std::get_if<Item>(&item.value)) found.push_back(*one);
  }
  return found;
}

template <typename Item>
std::vector<Item> itemsOf(const Turn& turn) {
  return itemsOf<Item>(turn.items);
}

/// The events of one kind, in order.
template <typename Event>
std::vector<Event> eventsOf(const std::vector<ThreadEvent>& events) {
  std::vector<Event> found;
  for (const ThreadEvent& event : events) {
    if (const auto* one = std::get_if<Event>(&event.value)) found.push_back(*one);
  }
  return found;
}

/// All events to the end.
inline std::vector<ThreadEvent> drain(StreamedTurn& streamed) {
  std::vector<ThreadEvent> events;
  for (const ThreadEvent& event : streamed.events) events.push_back(event);
  return events;
}

/// The completed items of the events.
inline std::vector<ThreadItem> completedItems(const std::vector<ThreadEvent>& events) {
  std::vector<ThreadItem> items;
  for (const auto& event : eventsOf<ItemCompletedEvent>(events)) items.push_back(event.item);
  return items;
}

/// The text of the last message of the agent.
inline std::string finalText(const std::vector<ThreadEvent>& events) {
  const auto messages = itemsOf<AgentMessageItem>(completedItems(events));
  return messages.empty() ? "" : std::string(messages.back().text);
}

}  // namespace ormel::simulator
