#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::simulator {

/// Appends one line of JSON for each thing that happens to a file that tests read. Each line is written at once.
class Recorder {
 public:
  /// Without a path, nothing is recorded. Several processes may use one file, at once or one after the other.
  /// Fails with `Error` if the file cannot be opened.
  explicit Recorder(const std::string& path);
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;
  ~Recorder();

  /// Records the arguments and the environment that this process was started with, and counts it as a run.
  void recordStart(const std::vector<std::string>& arguments);

  /// How many processes have been started with this record file, this one included; 1 without a file.
  std::size_t run() const noexcept { return run_; }

  /// Closes what this process has inherited besides the standard streams and the record.
  void closeOtherDescriptors() const noexcept;

  void record(std::string_view event, JSONObjectBuilder members = {});

  /// Records a line of the client.
  void recordReceived(std::string_view line, bool terminated);

  /// Records what is written to a stream, "stdout" or "stderr"; of much, only how much.
  void recordSent(std::string_view stream, std::string_view bytes);

  /// Records bytes as text: `key`, and with `key` + "Hex" if they are not UTF-8.
  static void setBytes(JSONObjectBuilder& members, std::string_view key, std::string_view bytes);

 private:
  std::size_t countStarts() const;

  int file_ = -1;
  std::string path_;
  std::size_t run_ = 1;
  std::size_t order_ = 0;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace ormel::simulator
