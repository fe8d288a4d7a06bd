#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace ormel::tests {

/// Where the library and a definition disagree.
struct Finding {
  /// The definition, and a field, case or word of it.
  std::string where;
  std::string what;
};

/// Collects findings until there are enough.
class Findings {
 public:
  /// Ends a check.
  struct Enough {};

  explicit Findings(std::size_t most) : most_(most) {}

  void add(Finding finding) {
    all_.push_back(std::move(finding));
    if (all_.size() >= most_) throw Enough();
  }

  std::vector<Finding> take() { return std::move(all_); }

 private:
  std::size_t most_;
  std::vector<Finding> all_;
};

}  // namespace ormel::tests
