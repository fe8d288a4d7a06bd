#pragma once

#include <string>

namespace ormel::simulator {

/// A task to be done with a path, in the words of its refusal: "cannot read a/b: No such file or directory".
class FileTask {
 public:
  FileTask(std::string verb, std::string path) : verb_(std::move(verb)), path_(std::move(path)) {}

  /// As the client gave it.
  const std::string& path() const noexcept { return path_; }

  /// Both fail with `Refusal`.
  [[noreturn]] void fail(const std::string& reason) const;
  /// Fails with the text of the system's error number.
  [[noreturn]] void failBy(int error) const;

 private:
  std::string verb_;
  std::string path_;
};

}  // namespace ormel::simulator
