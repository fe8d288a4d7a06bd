#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"

// Every type here has a JSON form.
namespace ormel {

/// How a skill is shown.
struct SkillInterface {
  std::optional<std::string> displayName;
  std::optional<std::string> shortDescription;
  /// A path or an address.
  std::optional<std::string> iconSmall;
  /// A path or an address.
  std::optional<std::string> iconLarge;
  /// A colour in the notation of the skill's author.
  std::optional<std::string> brandColor;
  /// A prompt that the user may send to try the skill.
  std::optional<std::string> defaultPrompt;
  friend bool operator==(const SkillInterface&, const SkillInterface&);
  friend std::ostream& operator<<(std::ostream& stream, const SkillInterface& value);
};

/// A skill, without its instructions.
struct SkillSummary {
  std::string name;
  /// When and for what the skill is used.
  std::string description;
  std::optional<std::string> shortDescription;
  std::optional<SkillInterface> interface;
  /// The file that holds the skill's instructions.
  std::string path;
  /// True unless the server says otherwise.
  bool enabled = true;
  friend bool operator==(const SkillSummary&, const SkillSummary&);
  friend std::ostream& operator<<(std::ostream& stream, const SkillSummary& value);
};

/// Why a skill could not be read.
struct SkillErrorInfo {
  /// The file.
  std::string path;
  std::string message;
  friend bool operator==(const SkillErrorInfo&, const SkillErrorInfo&);
  friend std::ostream& operator<<(std::ostream& stream, const SkillErrorInfo& value);
};

/// The skills that hold in one directory.
struct SkillsListEntry {
  std::string cwd;
  std::vector<SkillSummary> skills;
  /// The skills that could not be read; they are missing from `skills`.
  std::vector<SkillErrorInfo> errors;
  friend bool operator==(const SkillsListEntry&, const SkillsListEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const SkillsListEntry& value);
};

/// The skills of each directory that was asked about.
struct SkillsListResponse {
  std::vector<SkillsListEntry> data;
  friend bool operator==(const SkillsListResponse&, const SkillsListResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const SkillsListResponse& value);
};

}  // namespace ormel
