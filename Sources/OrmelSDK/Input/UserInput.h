#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/Text/SharedText.h"

namespace ormel {

/// How closely the model looks at an image.
enum class ImageDetail { high, original };
std::ostream& operator<<(std::ostream& stream, const ImageDetail& value);

/// A range of a text, counted in bytes of its UTF-8 form.
struct UserInputTextByteRange {
  std::int64_t start = 0;
  std::int64_t end = 0;
  friend bool operator==(const UserInputTextByteRange&, const UserInputTextByteRange&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputTextByteRange& value);
};

/// A marked range of a text, such as an inserted mention.
struct UserInputTextElement {
  UserInputTextByteRange byteRange;
  std::optional<std::string> placeholder;
  friend bool operator==(const UserInputTextElement&, const UserInputTextElement&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputTextElement& value);
};

/// Plain text.
struct UserInputText {
  std::string text;
  friend bool operator==(const UserInputText&, const UserInputText&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputText& value);
};

/// Text with marked ranges.
struct UserInputTextElements {
  std::string text;
  std::vector<UserInputTextElement> elements;
  friend bool operator==(const UserInputTextElements&, const UserInputTextElements&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputTextElements& value);
};

/// An image at a URL.
struct UserInputImage {
  std::string url;
  std::optional<ImageDetail> detail;
  friend bool operator==(const UserInputImage&, const UserInputImage&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputImage& value);
};

/// An image in a file that the server can read.
struct UserInputLocalImage {
  std::string path;
  std::optional<ImageDetail> detail;
  friend bool operator==(const UserInputLocalImage&, const UserInputLocalImage&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputLocalImage& value);
};

/// A skill to use.
struct UserInputSkill {
  std::string name;
  std::string path;
  friend bool operator==(const UserInputSkill&, const UserInputSkill&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputSkill& value);
};

/// Something mentioned by name.
struct UserInputMention {
  std::string name;
  std::string path;
  friend bool operator==(const UserInputMention&, const UserInputMention&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInputMention& value);
};

/// One part of the input of a user. Use `visit` to tell the cases apart. The cases have no JSON form of their own.
struct UserInput {
  std::variant<UserInputText, UserInputTextElements, UserInputImage, UserInputLocalImage, UserInputSkill,
               UserInputMention>
      value;

  UserInput() = default;
  UserInput(UserInputText part) : value(std::move(part)) {}
  UserInput(UserInputTextElements part) : value(std::move(part)) {}
  UserInput(UserInputImage part) : value(std::move(part)) {}
  UserInput(UserInputLocalImage part) : value(std::move(part)) {}
  UserInput(UserInputSkill part) : value(std::move(part)) {}
  UserInput(UserInputMention part) : value(std::move(part)) {}

  static UserInput text(std::string text) { return UserInputText{std::move(text)}; }
  static UserInput textElements(std::string text, std::vector<UserInputTextElement> elements) {
    return UserInputTextElements{std::move(text), std::move(elements)};
  }
  static UserInput image(std::string url, std::optional<ImageDetail> detail = std::nullopt) {
    return UserInputImage{std::move(url), detail};
  }
  static UserInput localImage(std::string path, std::optional<ImageDetail> detail = std::nullopt) {
    return UserInputLocalImage{std::move(path), detail};
  }
  static UserInput skill(std::string name, std::string path) {
    return UserInputSkill{std::move(name), std::move(path)};
  }
  static UserInput mention(std::string name, std::string path) {
    return UserInputMention{std::move(name), std::move(path)};
  }

  friend bool operator==(const UserInput&, const UserInput&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const UserInput& value);
};

/// The input of a turn: a text, or a list of typed parts. Has no JSON form.
struct Input {
  std::variant<std::string, std::vector<UserInput>> value;

  Input() = default;
  Input(std::string text) : value(std::move(text)) {}
  Input(const char* text) : value(std::string(text)) {}
  Input(std::string_view text) : value(std::string(text)) {}
  Input(const SharedText& text) : value(text.string()) {}
  Input(std::vector<UserInput> userInputs) : value(std::move(userInputs)) {}
  /// A list of one part.
  Input(UserInput userInput) : value(std::vector<UserInput>(1, std::move(userInput))) {}

  static Input from(std::vector<UserInput> userInputs) { return Input(std::move(userInputs)); }

  friend bool operator==(const Input&, const Input&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const Input& value);
};

/// One element of a list that is read leniently: `value` is absent when the element is no user input.
struct LossyUserInput {
  std::optional<UserInput> value;
  friend bool operator==(const LossyUserInput&, const LossyUserInput&) = default;
  friend std::ostream& operator<<(std::ostream& stream, const LossyUserInput& value);
};

}  // namespace ormel
