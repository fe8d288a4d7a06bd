#include "Approvals.h"

#include <algorithm>
#include <utility>

#include "ApprovalQuestion.h"
#include "AskedQuestion.h"
#include "ForeignText.h"

namespace ormel::chat {

namespace {

std::string approvalNote(const ApprovalSubject& subject) {
  return "Approved: " + subject.title + (subject.matter.empty() ? "" : " " + visible(subject.matter.front().text));
}

/// Decides approvals: asks the user, or approves everything.
class Judge {
 public:
  Judge(std::shared_ptr<Inbox> inbox, bool approvesEverything)
      : inbox_(std::move(inbox)), approvesEverything_(approvesEverything) {}

  Task<Verdict> judge(ApprovalSubject subject) const {
    if (approvesEverything_) {
      inbox_->post(Notice{approvalNote(subject), Style::dim});
      co_return Verdict::yes;
    }
    const OneShot<Verdict> verdict("approval");
    auto question = std::make_shared<ApprovalQuestion>(std::move(subject), verdict.resolver());
    const AskedQuestion asked(inbox_, std::move(question));
    const Verdict given = co_await verdict.wait();
    co_return given;
  }

 private:
  std::shared_ptr<Inbox> inbox_;
  bool approvesEverything_;
};

bool offers(const std::vector<OrmelApprovalDecision>& available, const OrmelApprovalDecision& decision) {
  return available.empty() || std::find(available.begin(), available.end(), decision) != available.end();
}

OrmelApprovalDecision decisionOf(Verdict verdict, const std::vector<OrmelApprovalDecision>& available) {
  switch (verdict) {
    case Verdict::yes:
      return OrmelApprovalDecision::accept;
    case Verdict::always:
      return offers(available, OrmelApprovalDecision::acceptForSession) ? OrmelApprovalDecision::acceptForSession
                                                                        : OrmelApprovalDecision::accept;
    case Verdict::no:
      break;
  }
  return OrmelApprovalDecision::decline;
}

void addIfGiven(std::vector<Quote>& quotes, const char* label, const std::optional<std::string>& text) {
  if (text) quotes.push_back({label, *text});
}

void addPermissions(std::vector<Quote>& quotes, const RequestPermissionProfile& permissions) {
  const auto add = [&](const char* label, const std::optional<JSONValue>& permission) {
    if (permission && !permission->isNull()) quotes.push_back({label, permission->encode()});
  };
  add("network", permissions.network);
  add("files", permissions.fileSystem);
}

std::string approvalTitle(const CommandApprovalRequest& request) {
  const bool isInput = request.kind == CommandApprovalKind::writeStdin;
  const std::string title = isInput ? "The agent wants to write to a running command" : "The agent wants to run";
  return request.command ? title + ":" : title + " something; the server does not say what.";
}

ApprovalSubject subjectOf(const CommandApprovalRequest& request) {
  ApprovalSubject subject(approvalTitle(request),
                          offers(request.availableDecisions, OrmelApprovalDecision::acceptForSession));
  if (request.command) subject.matter.push_back({"", *request.command, true});
  addIfGiven(subject.circumstances, "in", request.workingDirectory);
  addIfGiven(subject.circumstances, "reason", request.reason);
  addPermissions(subject.circumstances, request.additionalPermissions);
  return subject;
}

std::string approvalTitle(const FileChangeApprovalRequest& request) {
  if (request.changes.empty()) return "The agent wants to change files; the server does not say which.";
  if (request.changes.size() == 1) return "The agent wants to change a file:";
  return "The agent wants to change " + std::to_string(request.changes.size()) + " files:";
}

ApprovalSubject subjectOf(const FileChangeApprovalRequest& request) {
  ApprovalSubject subject(approvalTitle(request),
                          offers(request.availableDecisions, OrmelApprovalDecision::acceptForSession));
  for (const auto& change : request.changes) {
    subject.matter.push_back({std::string(rawValue(change.kind)), change.path});
  }
  if (request.grantRoot) {
    subject.circumstances.push_back({"all of", *request.grantRoot});
    subject.advice = "Allowing it lets the agent write anywhere in that folder.";
  }
  addIfGiven(subject.circumstances, "reason", request.reason);
  return subject;
}

ApprovalSubject subjectOf(const PermissionsApprovalRequest& request) {
  std::vector<Quote> permissions;
  addPermissions(permissions, request.permissions);
  ApprovalSubject subject(permissions.empty() ? "The agent asks for permissions; the server does not say which."
                                              : "The agent asks for permissions:",
                          true);
  subject.matter = std::move(permissions);
  addIfGiven(subject.circumstances, "reason", request.reason);
  return subject;
}

template <typename Request>
Task<OrmelApprovalDecision> decide(std::shared_ptr<const Judge> judge, Request request) {
  ApprovalSubject subject = subjectOf(request);
  const Verdict verdict = co_await judge->judge(std::move(subject));
  co_return decisionOf(verdict, request.availableDecisions);
}

Task<PermissionsApprovalResponse> grant(std::shared_ptr<const Judge> judge, PermissionsApprovalRequest request) {
  ApprovalSubject subject = subjectOf(request);
  const Verdict verdict = co_await judge->judge(std::move(subject));
  PermissionsApprovalResponse response;
  if (verdict != Verdict::no) {
    response.permissions.network = request.permissions.network;
    response.permissions.fileSystem = request.permissions.fileSystem;
  }
  if (verdict == Verdict::always) response.scope = PermissionGrantScope::session;
  co_return response;
}

}  // namespace

void installApprovals(ThreadOptions& options, std::shared_ptr<Inbox> inbox, bool approvesEverything) {
  const auto judge = std::make_shared<const Judge>(std::move(inbox), approvesEverything);
  options.commandApprovalHandler = [judge](CommandApprovalRequest request) {
    return decide(judge, std::move(request));
  };
  options.fileChangeApprovalHandler = [judge](FileChangeApprovalRequest request) {
    return decide(judge, std::move(request));
  };
  options.permissionsApprovalHandler = [judge](PermissionsApprovalRequest request) {
    return grant(judge, std::move(request));
  };
}

}  // namespace ormel::chat
