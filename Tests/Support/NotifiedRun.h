#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Support/SimulatedRun.h"

// The effects of a server's lines in a running turn: "u1" of the thread "t1".
namespace ormel::testing {

/// A notification as the server writes it: on one line, however `params` is laid out.
inline std::string line(std::string_view method, std::string_view params) {
  return JSONValue::object({{"method", method}, {"params", JSONValue::decode(params)}}).encode();
}

/// The events by which a running turn tells of the lines; `state` is the one in which they leave it.
inline std::vector<ThreadEvent> eventsOf(const std::vector<std::string>& lines, std::string_view state = "pending") {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  auto events = engine.end(engine.turn()).events;
  for (const std::string& text : lines) engine.write(text + "\n");
  EXPECT_EQ(engine.state(), state);
  engine.release();
  std::vector<ThreadEvent> all;
  for (const ThreadEvent& event : events) all.push_back(event);
  all.erase(all.begin());
  return all;
}

inline std::vector<std::string> wordsOf(const std::vector<std::string>& lines) {
  std::vector<std::string> words;
  for (const ThreadEvent& event : eventsOf(lines)) words.push_back(inWords(event));
  return words;
}

/// The same in words, with the end if there is one.
inline std::vector<std::string> wordsUpToTheEndOf(const std::vector<std::string>& lines) {
  SimulatedScheduler scheduler(1);
  SimulatedRun engine(scheduler);
  const auto heard = engine.startTurn();
  for (const std::string& text : lines) engine.write(text + "\n");
  std::vector<std::string> words = *heard;
  words.erase(words.begin());
  return words;
}

/// The items of a kind that were updated.
template <typename Item>
std::vector<Item> itemsOf(const std::vector<std::string>& lines) {
  std::vector<Item> items;
  for (const ThreadEvent& event : eventsOf(lines)) {
    const auto* updated = std::get_if<ItemUpdatedEvent>(&event.value);
    const auto* item = updated ? std::get_if<Item>(&updated->item.value) : nullptr;
    if (item) items.push_back(*item);
  }
  return items;
}

}  // namespace ormel::testing
