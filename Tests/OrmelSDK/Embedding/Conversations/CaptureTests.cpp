#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "OrmelSDK/Concurrency/ExecutionState.h"
#include "OrmelSDK/Embedding/EmbeddedServer.h"
#include "Support/Eventually.h"

namespace ormel {
namespace {

using testing::embeddedTurn;
using testing::embeddedTurnEnds;
using testing::optionsFor;
using testing::SimulatorScenario;

/// Where the captures were destroyed, each with the name of its owner: "application", or "library".
class Places {
 public:
  void note(const std::string& owner) {
    const std::lock_guard lock(mutex_);
    byOwner_[owner] = detail::onThreadOfApplication() ? "application" : "library";
  }
  std::map<std::string, std::string> byOwner() const {
    const std::lock_guard lock(mutex_);
    return byOwner_;
  }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::string> byOwner_;
};

class Capture {
 public:
  Capture(std::shared_ptr<Places> places, std::string owner) : places_(std::move(places)), owner_(std::move(owner)) {}
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture() { places_->note(owner_); }

 private:
  std::shared_ptr<Places> places_;
  std::string owner_;
};

/// Gives each owner a capture, which nothing else holds.
class Captures {
 public:
  std::shared_ptr<const Capture> of(const std::string& owner) {
    expected_[owner] = "application";
    return std::make_shared<const Capture>(places_, owner);
  }
  const std::map<std::string, std::string>& expected() const { return expected_; }
  std::map<std::string, std::string> destroyed() const { return places_->byOwner(); }

 private:
  std::shared_ptr<Places> places_ = std::make_shared<Places>();
  std::map<std::string, std::string> expected_;
};

ThreadOptions capturingHandlers(Captures& captures) {
  ThreadOptions options;
  options.commandApprovalHandler = [held = captures.of("command")](const CommandApprovalRequest&) {
    return OrmelApprovalDecision::decline;
  };
  options.fileChangeApprovalHandler = [held = captures.of("file")](const FileChangeApprovalRequest&) {
    return OrmelApprovalDecision::decline;
  };
  options.permissionsApprovalHandler = [held = captures.of("permissions")](const PermissionsApprovalRequest&) {
    return PermissionsApprovalResponse();
  };
  options.mcpServerElicitationHandler = [held = captures.of("elicitation")](const McpServerElicitationRequest&) {
    return McpServerElicitationResponse();
  };
  options.parlaneAuthTokensRefreshHandler = [held = captures.of("tokens")](const ParlaneAuthTokensRefreshRequest&) {
    return ParlaneAuthTokensRefreshResponse();
  };
  options.attestationGenerateHandler = [held = captures.of("attestation")] { return std::string("token"); };
  options.threadStartedHandler = [held = captures.of("thread started")](const std::string&) {};
  DynamicToolSpec spec;
  spec.name = "draw";
  DynamicTool tool{spec, [held = captures.of("tool")](const DynamicToolCallContext&) { return DynamicToolResult(); }};
  options.dynamicTools = std::vector<DynamicTool>{std::move(tool)};
  return options;
}

OrmelOptions capturingOptions(const SimulatorScenario& scenario, Captures& captures) {
  OrmelOptions options = optionsFor(scenario);
  options.problemHandler = [held = captures.of("problems")](const OrmelProblem&) {};
  options.executableTrustAssessment = [held = captures.of("assessment")](const std::string&) {
    return OrmelExecutableTrustAssessment::trusted();
  };
  options.trustCommandRunner = [held = captures.of("trust command")](const std::string&,
                                                                     const std::vector<std::string>&) {
    return OrmelExecutableTrustCommandResult();
  };
  return options;
}

const std::string callsOfHandlers =
    "server asks item/commandExecution/requestApproval {\"command\": \"ls\"} expecting {\"decision\": \"decline\"}\n"
    "server asks item/fileChange/requestApproval {\"itemId\": \"f\"} expecting {\"decision\": \"decline\"}\n"
    "server asks attestation/generate {} expecting {\"token\": \"token\"}\n"
    "server asks item/tool/call {\"tool\": \"draw\"} expecting {\"success\": false}\n";

void expectDestructionByTheApplication(const std::string& calls) {
  // The last reference is dropped by whoever comes last, so once is not enough.
  for (int round = 0; round < 20; ++round) {
    Captures captures;
    const SimulatorScenario scenario(embeddedTurn + calls + embeddedTurnEnds);
    {
      AbortController controller;
      controller.signal.register_([held = captures.of("observer")] {});
      TurnOptions turnOptions;
      turnOptions.signal = controller.signal;
      auto thread = Ormel(capturingOptions(scenario, captures)).startThread(capturingHandlers(captures));
      auto running = thread.run("go", std::move(turnOptions));
      std::move(running).start([held = captures.of("callback of start")](const TaskResult<Turn>& result) {
        EXPECT_TRUE(result.hasValue());
      });
    }
    EXPECT_TRUE(testing::eventually([&] { return captures.destroyed().size() == captures.expected().size(); }));
    ASSERT_EQ(captures.destroyed(), captures.expected());
  }
}

TEST(Captures, OfHandlersThatWereNotCalledAreDestroyedByTheApplication) { expectDestructionByTheApplication(""); }

TEST(Captures, OfHandlersThatWereCalledAreDestroyedByTheApplication) {
  expectDestructionByTheApplication(callsOfHandlers);
}

}  // namespace
}  // namespace ormel
