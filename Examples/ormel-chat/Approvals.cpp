#include "Approvals.h"

#include <algorithm>
#include <utility>

#include "ApprovalQuestion.h"
#include "AskedQuestion.h"
#include "Texts.h"

namespace ormel::chat {

namespace {

/// Decides approvals: asks the user, or approves everything.
class Judge {
 public:
  Judge(std::shared_ptr<Inbox> inbox, bool approvesEverything)
      : inbox_(std::move(inbox)), approvesEverything_(approvesEverything) {}

  Task<Verdict> judge(ApprovalSubject subject) const {
    if (approvesEverything_) {
      inbox_->post(Notice{"Approved: " + subject.title + (subject.details.empty() ? "" : " " + subject.details.front()),
                          Style::dim});
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

void addReason(ApprovalSubject& subject, const std::optional<std::string>& reason) {
  if (reason) subject.details.push_back("Reason: " + *reason);
}

void addPermissions(ApprovalSubject& subject, const RequestPermissionProfile& permissions) {
  const auto add = [&](const char* name, const std::optional<JSONValue>& permission) {
    if (permission && !permission->isNull()) subject.details.push_back(name + permission->encode());
  };
  add("Network: ", permissions.network);
  add("Files: ", permissions.fileSystem);
}

ApprovalSubject subjectOf(const CommandApprovalRequest& request) {
  const bool isInput = request.kind == CommandApprovalKind::writeStdin;
  ApprovalSubject subject(isInput ? "The agent wants to write to a running command:" : "The agent wants to run:",
                          offers(request.availableDecisions, OrmelApprovalDecision::acceptForSession));
  subject.details.push_back(request.command.value_or("(the server does not say what)"));
  if (request.workingDirectory) subject.details.push_back("in " + *request.workingDirectory);
  addReason(subject, request.reason);
  addPermissions(subject, request.additionalPermissions);
  return subject;
}

ApprovalSubject subjectOf(const FileChangeApprovalRequest& request) {
  ApprovalSubject subject("The agent wants to change files:",
                          offers(request.availableDecisions, OrmelApprovalDecision::acceptForSession));
  for (const auto& change : request.changes) {
    subject.details.push_back(std::string(rawValue(change.kind)) + " " + change.path);
  }
  if (request.changes.empty()) subject.details.push_back("(the server does not say which)");
  if (request.grantRoot) subject.details.push_back("and to write anywhere in " + *request.grantRoot);
  addReason(subject, request.reason);
  return subject;
}

ApprovalSubject subjectOf(const PermissionsApprovalRequest& request) {
  ApprovalSubject subject("The agent asks for permissions:", true);
  addPermissions(subject, request.permissions);
  if (subject.details.empty()) subject.details.push_back("(the server does not say which)");
  addReason(subject, request.reason);
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
