#include "EventRenderer.h"

namespace ormel::chat {

namespace {

std::string withDetails(std::string text, const std::optional<std::string>& details) {
  if (details) text += " (" + *details + ")";
  return text;
}

std::string tokenText(const Usage& usage) {
  const auto total = usage.totalTokens.value_or(usage.inputTokens + usage.outputTokens);
  return std::to_string(total) + " tokens: " + std::to_string(usage.inputTokens) + " in (" +
         std::to_string(usage.cachedInputTokens) + " cached), " + std::to_string(usage.outputTokens) + " out";
}

}  // namespace

void EventRenderer::show(const ThreadEvent& event) {
  if (json_) {
    json_->write(event);
    return;
  }
  visit(
      event,
      [this](const AuthRecoveryStartedEvent& started) { showEvent(static_cast<const AuthRecoveryEvent&>(started)); },
      [this](const AuthRecoveryCompletedEvent& ended) { showEvent(static_cast<const AuthRecoveryEvent&>(ended)); },
      [this](const auto& any) { showEvent(any); });
}

void EventRenderer::endOperation() {
  pause();
  items_.endOperation();
  if (json_) json_->endOperation();
}

void EventRenderer::note(std::string_view text, Style style) {
  items_.closeBlock();
  console_.line(text, style);
}

void EventRenderer::showEvent(const TurnCompletedEvent& event) {
  items_.closeBlock();
  console_.separate();
  console_.line(tokenText(event.usage), Style::dim);
}

void EventRenderer::showEvent(const TurnFailedEvent& event) {
  note("The turn failed: " + event.error.message, Style::red);
}

void EventRenderer::showEvent(const ThreadErrorEvent& event) { note("error: " + event.message, Style::red); }

void EventRenderer::showEvent(const HookCompletedEvent& event) {
  for (const auto& entry : event.run.entries) {
    note("hook " + event.run.eventName.rawValue + ": " + entry.text,
         entry.kind == HookOutputEntryKind::error ? Style::red : Style::dim);
  }
}

void EventRenderer::showEvent(const ThreadGoalUpdatedEvent& event) {
  note("goal: " + event.goal.objective, Style::cyan);
}

void EventRenderer::showEvent(const GuardianApprovalReviewCompletedEvent& event) {
  note("guardian: " + withDetails(std::string(rawValue(event.review.status)), event.review.rationale), Style::dim);
}

void EventRenderer::showEvent(const ThreadWarningEvent& event) { note("warning: " + event.message, Style::yellow); }

void EventRenderer::showEvent(const GuardianWarningEvent& event) { note("warning: " + event.message, Style::yellow); }

void EventRenderer::showEvent(const AuthRecoveryEvent& event) { note(event.message, Style::dim); }

void EventRenderer::showEvent(const DeprecationNoticeEvent& event) {
  note(withDetails("deprecated: " + event.summary, event.details), Style::yellow);
}

void EventRenderer::showEvent(const ConfigWarningEvent& event) {
  note(withDetails("configuration: " + event.summary, event.details), Style::yellow);
}

void EventRenderer::showEvent(const ModelReroutedEvent& event) {
  note("now served by " + event.toModel + ": " + event.reason, Style::dim);
}

}  // namespace ormel::chat
