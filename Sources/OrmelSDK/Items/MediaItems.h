#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel {

/// A search in the web. Its JSON form does not tell its type.
struct WebSearchItem {
  std::string id;
  std::string query;
  /// The search's action, in the server's own words.
  std::optional<JSONValue> action;
  friend bool operator==(const WebSearchItem&, const WebSearchItem&);
  friend std::ostream& operator<<(std::ostream& stream, const WebSearchItem& value);
};

/// The agent looked at an image. Its JSON form does not tell its type.
struct ImageViewItem {
  std::string id;
  std::string path;
  friend bool operator==(const ImageViewItem&, const ImageViewItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ImageViewItem& value);
};

/// The agent made an image.
struct ImageGenerationItem {
  std::string id;
  /// The status in the server's own words.
  std::string status;
  std::optional<std::string> revisedPrompt;
  std::string result;
  std::optional<std::string> savedPath;
  friend bool operator==(const ImageGenerationItem&, const ImageGenerationItem&);
  friend std::ostream& operator<<(std::ostream& stream, const ImageGenerationItem& value);
};

}  // namespace ormel
