#include "ormel-simulator/Machine/Git/GitDiffRequest.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ormel-simulator/Machine/Git/NeutralGit.h"
#include "ormel-simulator/Requests/Refusal.h"
#include "ormel-simulator/Requests/RequestParams.h"

namespace ormel::simulator {

namespace {

/// The pieces ahead of each end mark; a last piece without one was cut off and does not count.
std::deque<std::string> partsOf(const BoundedText& output, char end) {
  std::deque<std::string> parts;
  std::string_view rest = output.kept();
  for (std::size_t size = rest.find(end); size != std::string_view::npos; size = rest.find(end)) {
    parts.emplace_back(rest.substr(0, size));
    rest.remove_prefix(size + 1);
  }
  return parts;
}

std::string firstLineOf(const BoundedText& output) { return output.kept().substr(0, output.kept().find('\n')); }

/// One request: call after call of git, each one begun by the end of the one before. It lives as long as one of them
/// runs.
class GitDiff : public std::enable_shared_from_this<GitDiff> {
 public:
  GitDiff(RunningCommands& commands, std::string folder, LaterAnswer answer)
      : commands_(commands), folder_(std::move(folder)), answer_(std::move(answer)) {}

  /// Fails with `Refusal` if git cannot be run.
  void begin() {
    call({"rev-parse", "--show-toplevel"}, [this](const CommandResult& result) {
      if (result.exitCode != 0) {
        return refuse(folder_ + " is in no working copy of a git repository: " + firstLineOf(result.error));
      }
      folder_ = firstLineOf(result.output);
      findFilters();
    });
  }

 private:
  using Next = std::function<void(const CommandResult& result)>;

  void call(std::vector<std::string> arguments, Next next) {
    const auto self = shared_from_this();
    commands_.start(neutralGit(folder_, std::move(arguments), filters_), gitTimeLimit, {},
                    [self, next = std::move(next)](const CommandResult& result) { self->proceed(next, result); });
  }

  void proceed(const Next& next, const CommandResult& result) {
    try {
      if (result.hasTimedOut) return refuse("git takes too long in " + folder_);
      next(result);
    } catch (const Refusal& refusal) {
      answer_.refuse(refusal);
    } catch (const Error& error) {
      answer_.refuse({internalError, error.description()});
    }
  }

  void refuse(const std::string& reason) { answer_.refuse({invalidRequest, reason}); }

  // A filter is a program that the repository names; a diff would run it on each file that is compared.
  void findFilters() {
    call({"config", "-z", "--name-only", "--get-regexp", R"(^filter\..*\.(clean|smudge|process|required)$)"},
         [this](const CommandResult& result) {
           for (std::string& name : partsOf(result.output, '\0')) filters_.push_back(std::move(name));
           findHead();
         });
  }

  void findHead() {
    call({"rev-parse", "--verify", "--quiet", "HEAD^{commit}"}, [this](const CommandResult& result) {
      if (result.exitCode != 0) return refuse("the repository in " + folder_ + " has no commit yet");
      sha_ = firstLineOf(result.output);
      findBase();
    });
  }

  /// The commits that no branch of a remote has, and behind a "-" those that they were made on.
  void findBase() {
    call({"rev-list", "--boundary", "HEAD", "--not", "--remotes"}, [this](const CommandResult& result) {
      if (result.exitCode != 0) return refuseByGit(result);
      std::vector<std::string> bases;
      for (const std::string& commit : partsOf(result.output, '\n')) {
        if (commit.starts_with('-')) bases.push_back(commit.substr(1));
      }
      if (result.output.kept().empty()) return compare();
      if (result.output.isCut()) return refuse("too many commits of " + folder_ + " are on no branch of a remote");
      if (bases.empty()) return refuse("no branch of a remote has a commit of " + folder_);
      chooseBase(std::move(bases));
    });
  }

  /// Where branches were merged there are several; the newest one is nearest.
  void chooseBase(std::vector<std::string> bases) {
    bases.insert(bases.begin(), {"rev-list", "--no-walk=sorted", "--max-count=1"});
    call(std::move(bases), [this](const CommandResult& result) {
      if (result.exitCode != 0) return refuseByGit(result);
      sha_ = firstLineOf(result.output);
      compare();
    });
  }

  void compare() {
    std::vector<std::string> arguments = diffArguments();
    arguments.insert(arguments.end(), {"--ignore-submodules=dirty", sha_, "--"});
    call(std::move(arguments), [this](const CommandResult& result) {
      if (result.exitCode != 0) return refuseByGit(result);
      add(result);
      listNewFiles();
    });
  }

  void listNewFiles() {
    call({"ls-files", "--others", "--exclude-standard", "-z"}, [this](const CommandResult& result) {
      if (result.exitCode != 0) return refuseByGit(result);
      // The name of a folder is that of a repository in it.
      for (std::string& name : partsOf(result.output, '\0')) {
        if (!name.ends_with('/')) newFiles_.push_back(std::move(name));
      }
      addNewFile();
    });
  }

  /// Git's diff passes over files that it does not know yet.
  void addNewFile() {
    if (newFiles_.empty() || diff_.isFull()) return finish();
    std::vector<std::string> arguments = diffArguments();
    arguments.insert(arguments.end(), {"--no-index", "--", "/dev/null", newFiles_.front()});
    newFiles_.pop_front();
    call(std::move(arguments), [this](const CommandResult& result) {
      // Which tells that there is a difference; a file that has gone meanwhile is none.
      if (result.exitCode == 1) add(result);
      addNewFile();
    });
  }

  static std::vector<std::string> diffArguments() {
    return {"diff", "--no-ext-diff", "--no-textconv", "--no-color", "--no-relative"};
  }

  void add(const CommandResult& result) { diff_.append(result.output.text()); }

  void finish() { answer_.give(JSONValue::object({{"sha", sha_}, {"diff", diff_.text()}})); }

  void refuseByGit(const CommandResult& result) {
    refuse("git fails in " + folder_ + ": " + firstLineOf(result.error));
  }

  RunningCommands& commands_;
  std::string folder_;
  LaterAnswer answer_;
  std::vector<std::string> filters_;
  std::string sha_;
  BoundedText diff_;
  std::deque<std::string> newFiles_;
};

}  // namespace

void addGitDiffRequest(RequestTable& table, RunningCommands& commands) {
  table["gitDiffToRemote"] = [&commands](const JSONValue& params, const LaterAnswer& answer) {
    std::make_shared<GitDiff>(commands, RequestParams(params).text("cwd"), answer)->begin();
  };
}

}  // namespace ormel::simulator
