#pragma once

#include <set>
#include <string>

#include "ormel-simulator/Agent/AgentThread.h"

namespace ormel::simulator {

/// Which threads a listing is about. An empty set lets all pass.
class ThreadFilter {
 public:
  /// Reads the params of "thread/list".
  explicit ThreadFilter(const JSONValue& params);

  bool lets(const AgentThread& thread) const;

 private:
  bool hasSearchTerm(const AgentThread& thread) const;

  bool archived_;
  std::set<std::string> modelProviders_;
  std::set<std::string> sourceKinds_;
  std::set<std::string> directories_;
  /// The search term in lower case.
  std::string searchTerm_;
};

}  // namespace ormel::simulator
