#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"

namespace ormel {

/// The status of a change of files. Read without regard to case, "_" and "-"; a word that is not known is `failed`.
enum class PatchApplyStatus { inProgress, completed, failed, declined };
std::ostream& operator<<(std::ostream& stream, const PatchApplyStatus& value);

/// The kind of a file's change. Read from a string, or from an object whose `type` is that string.
enum class PatchChangeKind { add, delete_, update };
std::ostream& operator<<(std::ostream& stream, const PatchChangeKind& value);

/// The change of one file.
struct FileUpdateChange {
  std::string path;
  PatchChangeKind kind = PatchChangeKind::update;
  friend bool operator==(const FileUpdateChange&, const FileUpdateChange&);
  friend std::ostream& operator<<(std::ostream& stream, const FileUpdateChange& value);
};

/// Files that the agent changes. Its JSON form does not tell its type.
struct FileChangeItem {
  std::string id;
  std::vector<FileUpdateChange> changes;
  PatchApplyStatus status = PatchApplyStatus::failed;
  friend bool operator==(const FileChangeItem&, const FileChangeItem&);
  friend std::ostream& operator<<(std::ostream& stream, const FileChangeItem& value);
};

}  // namespace ormel
