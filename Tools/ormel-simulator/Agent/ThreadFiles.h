#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "ormel-simulator/Agent/AgentThread.h"

namespace ormel::simulator {

/// Tells one writing of a file from another.
struct FileStamp {
  std::uintmax_t node = 0;
  std::uintmax_t size = 0;
  std::filesystem::file_time_type time;
  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// The files of a folder that keep a thread each.
class ThreadFiles {
 public:
  explicit ThreadFiles(std::filesystem::path folder) : folder_(std::move(folder)) {}

  const std::filesystem::path& folder() const noexcept { return folder_; }
  std::filesystem::path path(const std::string& id) const { return folder_ / (id + ".json"); }

  /// The ids of the threads that have a file, also of a damaged one.
  std::vector<std::string> ids() const;

  /// Nothing if the thread has no file, or cannot have one by its id.
  std::optional<FileStamp> stamp(const std::string& id) const;

  /// Fails with `Error` if the file cannot be read as that thread.
  AgentThread read(const std::string& id) const;

  /// A reader finds the old state or the new one, also if this process dies in between. Fails with `Error`.
  void write(const AgentThread& thread) const;

  void remove(const std::string& id) const;

 private:
  std::filesystem::path folder_;
};

}  // namespace ormel::simulator
