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
  friend bool operator==(const UserInputTextByteRange&, const UserInputTextByteRange&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputTextByteRange& value);
};

/// A marked range of a text, such as an inserted mention.
struct UserInputTextElement {
  UserInputTextByteRange byteRange;
  std::optional<std::string> placeholder;
  friend bool operator==(const UserInputTextElement&, const UserInputTextElement&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputTextElement& value);
};

/// Plain text.
struct UserInputText {
  std::string text;
  friend bool operator==(const UserInputText&, const UserInputText&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputText& value);
};

/// Text with marked ranges.
struct UserInputTextElements {
  std::string text;
  std::vector<UserInputTextElement> elements;
  friend bool operator==(const UserInputTextElements&, const UserInputTextElements&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputTextElements& value);
};

/// An image at a URL.
struct UserInputImage {
  std::string url;
  std::optional<ImageDetail> detail;
  friend bool operator==(const UserInputImage&, const UserInputImage&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputImage& value);
};

/// An image in a file that the server can read.
struct UserInputLocalImage {
  std::string path;
  std::optional<ImageDetail> detail;
  friend bool operator==(const UserInputLocalImage&, const UserInputLocalImage&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputLocalImage& value);
};

/// A skill to use.
struct UserInputSkill {
  std::string name;
  std::string path;
  friend bool operator==(const UserInputSkill&, const UserInputSkill&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputSkill& value);
};

/// Something mentioned by name.
struct UserInputMention {
  std::string name;
  std::string path;
  friend bool operator==(const UserInputMention&, const UserInputMention&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInputMention& value);
};

/// One part of the input of a user. Use `visit` to tell the cases apart. The cases have no JSON form of their own.
struct UserInput {
  std::variant<UserInputText, UserInputTextElements, UserInputImage, UserInputLocalImage, UserInputSkill,
               UserInputMention>
      value;

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  UserInput();
  UserInput(const UserInput& other);
  UserInput(UserInput&& other) noexcept;
  UserInput& operator=(const UserInput& other);
  UserInput& operator=(UserInput&& other) noexcept;
  ~UserInput();

  UserInput(UserInputText part);
  UserInput(UserInputTextElements part);
  UserInput(UserInputImage part);
  UserInput(UserInputLocalImage part);
  UserInput(UserInputSkill part);
  UserInput(UserInputMention part);

  static UserInput text(std::string text);
  static UserInput textElements(std::string text, std::vector<UserInputTextElement> elements);
  static UserInput image(std::string url, std::optional<ImageDetail> detail = std::nullopt);
  static UserInput localImage(std::string path, std::optional<ImageDetail> detail = std::nullopt);
  static UserInput skill(std::string name, std::string path);
  static UserInput mention(std::string name, std::string path);

  friend bool operator==(const UserInput&, const UserInput&);
  friend std::ostream& operator<<(std::ostream& stream, const UserInput& value);
};

/// The input of a turn: a text, or a list of typed parts. Has no JSON form.
struct Input {
  std::variant<std::string, std::vector<UserInput>> value;

  // Copying and moving a variant is much code; it is compiled once, not in every file that does it.
  Input();
  Input(const Input& other);
  Input(Input&& other) noexcept;
  Input& operator=(const Input& other);
  Input& operator=(Input&& other) noexcept;
  ~Input();

  Input(std::string text);
  Input(const char* text);
  Input(std::string_view text);
  Input(const SharedText& text);
  Input(std::vector<UserInput> userInputs);
  /// A list of one part.
  Input(UserInput userInput);

  static Input from(std::vector<UserInput> userInputs);

  friend bool operator==(const Input&, const Input&);
  friend std::ostream& operator<<(std::ostream& stream, const Input& value);
};

/// One element of a list that is read leniently: `value` is absent when the element is no user input.
struct LossyUserInput {
  std::optional<UserInput> value;
  friend bool operator==(const LossyUserInput&, const LossyUserInput&);
  friend std::ostream& operator<<(std::ostream& stream, const LossyUserInput& value);
};

}  // namespace ormel
