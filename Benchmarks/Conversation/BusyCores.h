#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Support/ChildProgram.h"

namespace ormel::benchmarks {

/// A busy process for each core, as long as this lives, as if another build ran beside the measurement.
class BusyCores {
 public:
  BusyCores() {
    testing::ChildOptions options;
    options.arguments = {"bare", "busy", "0"};
    for (unsigned core = 0; core < std::thread::hardware_concurrency(); ++core) {
      processes_.push_back(std::make_unique<testing::ChildProgram>(ORMEL_CONVERSATION_SERVER, options));
    }
  }

 private:
  std::vector<std::unique_ptr<testing::ChildProgram>> processes_;
};

}  // namespace ormel::benchmarks
