#pragma once

#include <unistd.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/ChildProgram.h"

namespace ormel::benchmarks {

/// A child without a protocol, read by blocking calls.
class BareChild {
 public:
  explicit BareChild(std::vector<std::string> arguments) : program_(ORMEL_CONVERSATION_SERVER, settings(arguments)) {
    testing::setNonBlocking(program_.outputDescriptor(), false);
  }

  int inputDescriptor() const noexcept { return program_.inputDescriptor(); }
  int outputDescriptor() const noexcept { return program_.outputDescriptor(); }

  void write(std::string_view bytes) { program_.write(bytes); }

  /// The bytes of one read; empty at the end.
  std::string_view read() {
    const ssize_t got = ::read(program_.outputDescriptor(), block_.data(), block_.size());
    return std::string_view(block_).substr(0, got > 0 ? static_cast<std::size_t>(got) : 0);
  }

 private:
  static testing::ChildOptions settings(std::vector<std::string>& arguments) {
    testing::ChildOptions options;
    options.arguments = std::move(arguments);
    return options;
  }

  testing::ChildProgram program_;
  std::string block_ = std::string(65'536, '\0');
};

}  // namespace ormel::benchmarks
