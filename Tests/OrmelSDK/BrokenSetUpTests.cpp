#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <map>
#include <string>

#include "OrmelSDK/OrmelSDK.h"
#include "Support/BrokenSetUps.h"

namespace {

using namespace ormel;
using ormel::testing::BrokenSetUp;
using ormel::testing::TemporaryDirectory;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

/// The variables of this process that the search for a server reads, as a set-up wants them.
class Surroundings {
 public:
  explicit Surroundings(const TemporaryDirectory& home) {
    home.addDirectory("bin");
    set("HOME", home.path().string());
    set("PATH", home / "bin");
    set("ORMEL_API_KEY", ormel::testing::setUpSecret);
    set("KESTRION_ORMEL_PATH", "");
  }
  ~Surroundings() {
    for (const auto& [name, value] : before_) {
      if (value) {
        ::setenv(name.c_str(), value->c_str(), 1);
      } else {
        ::unsetenv(name.c_str());
      }
    }
  }

 private:
  void set(const std::string& name, const std::string& value) {
    const char* const old = ::getenv(name.c_str());
    before_[name] = old ? std::optional<std::string>(old) : std::nullopt;
    ::setenv(name.c_str(), value.c_str(), 1);
  }

  std::map<std::string, std::optional<std::string>> before_;
};

Ormel ormelNaming(const std::string& server) {
  OrmelOptions options;
  if (!server.empty()) options.ormelPathOverride = server;
  return Ormel(options);
}

void expectAdvice(const BrokenSetUp& row, const std::string& advice, const FailureCause* cause, bool isOfTurn = false) {
  // A turn ends with the output of its server, and the system may tell the status of the process a moment later.
  const bool mayLackStatus = isOfTurn && row.kind == FailureCause::Kind::serverEnded;
  if (!mayLackStatus) {
    for (const std::string& piece : row.advice) EXPECT_THAT(advice, HasSubstr(piece));
  }
  EXPECT_NE(advice, "");
  EXPECT_THAT(advice, Not(AnyOf(HasSubstr("curl"), HasSubstr("| sh"), HasSubstr(ormel::testing::setUpSecret))));
  ASSERT_NE(cause, nullptr);
  EXPECT_EQ(cause->kind, row.kind);
}

template <typename Result>
void expectFailure(const BrokenSetUp& row, Task<Result> task, bool isOfTurn) {
  try {
    static_cast<void>(std::move(task).get());
    ADD_FAILURE() << "it went well";
  } catch (const Error& error) {
    expectAdvice(row, error.advice(), error.cause().get(), isOfTurn);
  }
}

TEST(BrokenSetUps, AreExplainedByTheErrorsOfCallsAndTurns) {
  for (const BrokenSetUp& row : ormel::testing::brokenSetUps()) {
    if (row.hangs) continue;
    SCOPED_TRACE(row.name);
    const TemporaryDirectory home;
    const Surroundings surroundings(home);
    const Ormel ormel = ormelNaming(row.make(home));
    expectFailure(row, ormel.performRPC<JSONValue>("thread/list"), false);
    expectFailure(row, ormel.startThread().run("Hello"), true);
  }
}

TEST(BrokenSetUps, AreDiagnosedWithoutAFailure) {
  for (const BrokenSetUp& row : ormel::testing::brokenSetUps()) {
    SCOPED_TRACE(row.name);
    const TemporaryDirectory home;
    const Surroundings surroundings(home);
    DiagnosisOptions options;
    options.timeout = row.hangs ? std::chrono::milliseconds(200) : std::chrono::milliseconds(30'000);
    const Diagnosis diagnosis = ormelNaming(row.make(home)).diagnose(options).get();
    EXPECT_FALSE(diagnosis.isUsable);
    EXPECT_NE(diagnosis.problem, "");
    EXPECT_LT(diagnosis.duration, options.timeout + std::chrono::seconds(20));
    EXPECT_EQ(diagnosis.environment.at("ORMEL_API_KEY"), "***");
    expectAdvice(row, diagnosis.advice, diagnosis.cause.get());
  }
}

TEST(Diagnosis, RemarksOnANameThatWasPassedOverForAServerThatWorks) {
  const TemporaryDirectory home;
  const Surroundings surroundings(home);
  home.addExecutable("bin/ormel",
                     "#!/bin/sh\nread line\necho '{\"id\":1,\"result\":{\"userAgent\":\"server/2.5 (x)\"}}'\n"
                     "while read line; do :; done\n");
  OrmelOptions options;
  options.ormelPathOverride = home / "ormell";
  options.executableTrustAssessment = [](const std::string&) { return OrmelExecutableTrustAssessment::trusted(); };
  const Diagnosis diagnosis = Ormel(options).diagnose().get();
  EXPECT_TRUE(diagnosis.isUsable) << diagnosis.problem;
  EXPECT_EQ(diagnosis.version, "2.5");
  EXPECT_THAT(diagnosis.advice, HasSubstr("was passed over: no such file"));
  ASSERT_GE(diagnosis.candidates.size(), 2u);
  EXPECT_EQ(diagnosis.candidates[0].finding.verdict, ExecutableVerdict::noSuchFile);
  EXPECT_FALSE(diagnosis.candidates[0].isSelected);
  EXPECT_EQ(diagnosis.candidates[1].finding.path, home / "bin/ormel");
  EXPECT_TRUE(diagnosis.candidates[1].isSelected);
}

TEST(Diagnosis, TellsWhoDidNotVouch) {
  const TemporaryDirectory home;
  OrmelOptions options;
  options.ormelPathOverride = home.addExecutable("server");
  options.executableTrustAssessment = [](const std::string&) {
    return OrmelExecutableTrustAssessment::rejected("not on the list");
  };
  const Diagnosis diagnosis = Ormel(options).diagnose().get();
  EXPECT_THAT(diagnosis.advice, HasSubstr("the application's own assessment"));
  EXPECT_THAT(diagnosis.advice, HasSubstr("not on the list"));
}

TEST(Advice, IsGivenByEveryError) {
  const std::vector<std::shared_ptr<const Error>> errors = {
      std::make_shared<Error>("x"),
      std::make_shared<CancelledError>(),
      std::make_shared<AbandonedError>(),
      std::make_shared<ResourceExhaustedError>("threads", "x"),
      std::make_shared<ResourceExhaustedError>("descriptors", "x"),
      std::make_shared<ForkedProcessError>(),
      std::make_shared<WouldDeadlockError>(),
      std::make_shared<HandlerError>("x"),
      std::make_shared<EncodingError>("x"),
      std::make_shared<JSONSyntaxError>("x", 3),
      std::make_shared<DecodingError>(DecodingError::keyNotFound("x", DecodingContext("y"))),
      std::make_shared<AppServerRPCError>(-32601, "x"),
      std::make_shared<AppServerRPCError>(-32602, "x"),
      std::make_shared<AppServerRPCError>(1, "x"),
      std::make_shared<FileSystemError>("x", std::make_error_code(std::errc::permission_denied)),
      std::make_shared<FileSystemError>("x", std::make_error_code(std::errc::no_space_on_device)),
      std::make_shared<ThreadRunError>(ThreadRunError::turnFailed("x")),
      std::make_shared<ThreadRunError>(ThreadRunError::streamError("x")),
      std::make_shared<OrmelProcessError>(OrmelProcessError::aborted()),
      std::make_shared<OrmelProcessError>(OrmelProcessError::unsupportedPlatform("x")),
      std::make_shared<OrmelProcessError>(OrmelProcessError::invalidConfigOverride("x")),
      std::make_shared<OrmelProcessError>(OrmelProcessError::untrustedExecutable("x", "y")),
      std::make_shared<OrmelProcessError>(OrmelProcessError::spawnFailed("x")),
  };
  for (const auto& error : errors) {
    EXPECT_GT(error->advice().size(), 20u) << error->what();
    EXPECT_FALSE(error->advice().ends_with('\n')) << error->what();
    EXPECT_THAT(error->advice(), Not(HasSubstr("curl"))) << error->what();
  }
  EXPECT_NE(errors[1]->advice(), errors[2]->advice());
}

TEST(Advice, HasNoPartInTheEqualityAndTextOfErrors) {
  const auto cause = std::make_shared<FailureCause>(FailureCause::Kind::noServer);
  EXPECT_EQ(ThreadRunError::streamError("x", cause), ThreadRunError::streamError("x"));
  EXPECT_EQ(OrmelProcessError::spawnFailed("x", cause), OrmelProcessError::spawnFailed("x"));
  EXPECT_STREQ(OrmelProcessError::spawnFailed("x", cause).what(), "x");
}

}  // namespace
