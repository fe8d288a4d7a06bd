#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel {

/// A plan as text. Its JSON form does not tell its type.
struct PlanItem {
  std::string id;
  /// Grows while the plan streams.
  SharedText text;
  friend bool operator==(const PlanItem&, const PlanItem&);
  friend std::ostream& operator<<(std::ostream& stream, const PlanItem& value);
};

/// The model's reasoning.
struct ReasoningItem {
  std::string id;
  std::vector<SharedText> summary;
  /// Its texts grow while the reasoning streams.
  std::vector<SharedText> content;

  /// The summary and then the content, one a line. A single text is shared and not copied.
  SharedText text() const;

  friend bool operator==(const ReasoningItem&, const ReasoningItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ReasoningItem& value);
};

/// One thing to do.
struct TodoItem {
  std::string text;
  bool completed = false;
  friend bool operator==(const TodoItem&, const TodoItem&);
  friend std::ostream& operator<<(std::ostream& stream, const TodoItem& value);
};

/// The agent's list of things to do. Its JSON form does not tell its type.
struct TodoListItem {
  std::string id;
  std::vector<TodoItem> items;
  friend bool operator==(const TodoListItem&, const TodoListItem&);
  friend std::ostream& operator<<(std::ostream& stream, const TodoListItem& value);
};

}  // namespace ormel
