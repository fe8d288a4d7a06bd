#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// The status of a tool call. Read without regard to case, "_" and "-"; a word that is not known is `failed`.
enum class DynamicToolCallStatus { inProgress, completed, failed };
std::ostream& operator<<(std::ostream& stream, const DynamicToolCallStatus& value);

/// Text for the model.
struct DynamicToolCallOutputText {
  std::string text;
  friend bool operator==(const DynamicToolCallOutputText&, const DynamicToolCallOutputText&);
};

/// An image for the model, at a URL.
struct DynamicToolCallOutputImage {
  std::string imageURL;
  friend bool operator==(const DynamicToolCallOutputImage&, const DynamicToolCallOutputImage&);
};

/// One part of the result of a tool. Use `visit` to tell the cases apart. The cases have no JSON form of their own.
struct DynamicToolCallOutputContentItem {
  std::variant<DynamicToolCallOutputText, DynamicToolCallOutputImage> value;

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  DynamicToolCallOutputContentItem();
  DynamicToolCallOutputContentItem(const DynamicToolCallOutputContentItem& other);
  DynamicToolCallOutputContentItem(DynamicToolCallOutputContentItem&& other) noexcept;
  DynamicToolCallOutputContentItem& operator=(const DynamicToolCallOutputContentItem& other);
  DynamicToolCallOutputContentItem& operator=(DynamicToolCallOutputContentItem&& other) noexcept;
  ~DynamicToolCallOutputContentItem();

  DynamicToolCallOutputContentItem(DynamicToolCallOutputText part);
  DynamicToolCallOutputContentItem(DynamicToolCallOutputImage part);

  static DynamicToolCallOutputContentItem inputText(std::string text);
  static DynamicToolCallOutputContentItem inputImage(std::string imageURL);

  friend bool operator==(const DynamicToolCallOutputContentItem&, const DynamicToolCallOutputContentItem&);
  friend std::ostream& operator<<(std::ostream& stream, const DynamicToolCallOutputContentItem& value);
};

/// A call of a tool that the application lends to the model. Its JSON form does not tell its type.
struct DynamicToolCallItem {
  std::string id;
  std::optional<std::string> namespace_;
  std::string tool;
  JSONValue arguments;
  DynamicToolCallStatus status = DynamicToolCallStatus::failed;
  std::optional<std::vector<DynamicToolCallOutputContentItem>> contentItems;
  std::optional<std::int64_t> durationMilliseconds;
  std::optional<bool> success;
  friend bool operator==(const DynamicToolCallItem&, const DynamicToolCallItem&);
  friend std::ostream& operator<<(std::ostream& stream, const DynamicToolCallItem& value);
};

}  // namespace ormel
