#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace ormel::simulator {

/// The meaning of a text inside of an example or a payload.
struct TemplateText {
  enum class Kind {
    /// The text itself, after `${name}` is filled in.
    literal,
    /// `$name`: the value of a variable.
    variable,
    /// `$string` and the like: any value of a type.
    wildcard,
    /// `$contains:text`: any text that contains it.
    contains,
    /// `$matches:expression`: any text that the regular expression matches as a whole.
    matches,
    /// A text with a leading dollar sign that means nothing.
    unknown,
  };

  Kind kind = Kind::literal;
  /// The literal, the variable's name, the wildcard's word, or the operand.
  std::string_view text;
  /// Variable that takes the value; empty for none.
  std::string_view capture;
};

/// Reads a text of an example, in which wildcards have a meaning.
TemplateText readExampleText(std::string_view text);

/// Reads a text of a payload, which has variables but no wildcards.
TemplateText readPayloadText(std::string_view text);

/// Whether `name` can name a variable: a name that is no wildcard.
bool isVariableName(std::string_view name);

/// Calls `onName` for each `${name}` in `literal`, and returns the text with each replaced by what that returns.
std::string fillIn(std::string_view literal, const std::function<std::string(std::string_view)>& onName);

}  // namespace ormel::simulator
