#include "ItemRenderer.h"

#include <algorithm>
#include <utility>

#include "Texts.h"

namespace ormel::chat {

namespace {

constexpr std::string_view indentation = "  ";

std::string_view markOf(PatchChangeKind kind) {
  switch (kind) {
    case PatchChangeKind::add:
      return "+ ";
    case PatchChangeKind::delete_:
      return "- ";
    case PatchChangeKind::update:
      break;
  }
  return "~ ";
}

Style styleOf(PatchChangeKind kind) {
  switch (kind) {
    case PatchChangeKind::add:
      return Style::green;
    case PatchChangeKind::delete_:
      return Style::red;
    case PatchChangeKind::update:
      break;
  }
  return Style::yellow;
}

bool isQuestion(const McpToolCallItem& item) {
  return item.tool == "elicitation/request" || (item.server == "ormel" && item.tool == "request_user_input");
}

std::string endOf(const CommandExecutionItem& item) {
  if (item.status == CommandExecutionStatus::declined) return "declined";
  std::string text = item.status == CommandExecutionStatus::failed ? "failed" : "done";
  if (item.exitCode) text += ", exit status " + std::to_string(*item.exitCode);
  if (item.durationMilliseconds) text += ", " + durationText(*item.durationMilliseconds);
  return text;
}

}  // namespace

void ItemRenderer::show(const ThreadItem& item, ItemStage stage) {
  visit(item, [&](const auto& kind) { showItem(kind, stage); });
}

void ItemRenderer::closeBlock() {
  console_.endLine();
  openBlock_.clear();
  openText_.clear();
}

void ItemRenderer::endOperation() {
  shown_.clear();
  shownLists_.clear();
  shownProgress_.clear();
}

void ItemRenderer::openBlock(const std::string& id, std::string_view title, Style style) {
  if (openBlock_ == id) return;
  console_.separate();
  openBlock_ = id;
  openText_.clear();
  if (!title.empty()) console_.line(title, style);
}

void ItemRenderer::grow(const std::string& name, const SharedText& text, ItemStage stage, std::string_view indent,
                        Style style) {
  const auto news = stage == ItemStage::completed ? shown_.completed(name, text) : shown_.gained(name, text);
  if (news.empty()) return;
  // A text that says something else than its pieces did begins on a line of its own, like another text.
  if (openText_ != name || news.size() == text.size()) console_.endLine();
  openText_ = name;
  writeIndented(news, indent, style);
}

void ItemRenderer::writeIndented(std::string_view text, std::string_view indent, Style style) {
  while (!text.empty()) {
    const auto end = text.find('\n');
    const auto line = text.substr(0, end == text.npos ? end : end + 1);
    if (console_.isAtLineStart() && line != "\n") console_.write(indent);
    console_.write(line, style);
    text.remove_prefix(line.size());
  }
}

void ItemRenderer::note(std::string_view text, Style style) {
  closeBlock();
  console_.line(text, style);
}

void ItemRenderer::showItem(const AgentMessageItem& item, ItemStage stage) {
  if (!item.text.empty()) openBlock(item.id, {}, Style::plain);
  grow(item.id, item.text, stage, {}, Style::plain);
  if (stage == ItemStage::completed) closeBlock();
}

void ItemRenderer::showItem(const PlanItem& item, ItemStage stage) {
  openBlock(item.id, "plan", Style::cyan);
  grow(item.id, item.text, stage, indentation, Style::plain);
  if (stage == ItemStage::completed) closeBlock();
}

void ItemRenderer::showItem(const ReasoningItem& item, ItemStage stage) {
  const SharedText text = item.text();
  if (!text.empty()) openBlock(item.id, "thinking", Style::dim);
  grow(item.id, text, stage, indentation, Style::dim);
  if (stage == ItemStage::completed) closeBlock();
}

void ItemRenderer::showItem(const CommandExecutionItem& item, ItemStage stage) {
  openBlock(item.id, "$ " + item.command, Style::bold);
  grow(item.id, item.aggregatedOutput, stage, indentation, Style::dim);
  if (stage != ItemStage::completed) return;
  closeBlock();
  const bool isGood = item.status == CommandExecutionStatus::completed && item.exitCode.value_or(0) == 0;
  console_.line(std::string(indentation) + endOf(item), isGood ? Style::green : Style::red);
}

void ItemRenderer::showItem(const FileChangeItem& item, ItemStage stage) {
  if (stage != ItemStage::completed) return;
  openBlock(item.id, "files", Style::cyan);
  for (const auto& change : item.changes) {
    console_.line(std::string(indentation).append(markOf(change.kind)).append(change.path), styleOf(change.kind));
  }
  if (item.status == PatchApplyStatus::declined) console_.line("  declined", Style::red);
  if (item.status == PatchApplyStatus::failed) console_.line("  failed", Style::red);
  closeBlock();
}

void ItemRenderer::showItem(const TodoListItem& item, ItemStage stage) {
  const auto& todos = item.items;
  const auto shown = std::exchange(shownLists_[item.id], todos);
  const bool isSameList =
      std::equal(todos.begin(), todos.end(), shown.begin(), shown.end(),
                 [](const TodoItem& left, const TodoItem& right) { return left.text == right.text; });
  for (std::size_t index = 0; index < todos.size(); ++index) {
    const auto& [text, completed] = todos[index];
    if (isSameList && completed == shown[index].completed) continue;
    openBlock(item.id, "to do", Style::cyan);
    console_.line((completed ? "  [x] " : "  [ ] ") + text, completed ? Style::dim : Style::plain);
  }
  if (stage == ItemStage::completed) shownLists_.erase(item.id);
}

void ItemRenderer::showToolCall(const std::string& id, std::string_view name, const JSONValue& arguments) {
  openBlock(id, std::string("tool ").append(name).append(" ").append(shortened(arguments.encode())), Style::bold);
}

void ItemRenderer::showItem(const McpToolCallItem& item, ItemStage stage) {
  // Questions to the user are shown where they are answered.
  if (isQuestion(item)) return;
  showToolCall(item.id, item.server + "." + item.tool, item.arguments);
  if (stage != ItemStage::completed) {
    if (item.progressMessage && *item.progressMessage != shownProgress_) {
      shownProgress_ = *item.progressMessage;
      console_.line(std::string(indentation) + shownProgress_, Style::dim);
    }
    return;
  }
  if (item.result) writeIndented(toolText(item.result->content), indentation, Style::dim);
  closeBlock();
  if (item.error) console_.line("  failed: " + item.error->message, Style::red);
  if (!item.error && item.status == McpToolCallStatus::failed) console_.line("  failed", Style::red);
}

void ItemRenderer::showItem(const DynamicToolCallItem& item, ItemStage stage) {
  showToolCall(item.id, item.namespace_ ? *item.namespace_ + "." + item.tool : item.tool, item.arguments);
  if (stage != ItemStage::completed) return;
  if (item.contentItems) writeIndented(toolText(*item.contentItems), indentation, Style::dim);
  closeBlock();
  if (item.status == DynamicToolCallStatus::failed || item.success == false) console_.line("  failed", Style::red);
}

void ItemRenderer::showItem(const CollabAgentToolCallItem& item, ItemStage stage) {
  if (stage != ItemStage::started) return;
  note("agents: " + std::string(rawValue(item.tool)) + (item.prompt ? ": " + *item.prompt : ""));
}

void ItemRenderer::showItem(const EnteredReviewModeItem& item, ItemStage stage) {
  if (stage == ItemStage::completed) note("review of " + item.review, Style::cyan);
}

void ItemRenderer::showItem(const ExitedReviewModeItem& item, ItemStage stage) {
  if (stage != ItemStage::completed) return;
  openBlock(item.id, "review", Style::cyan);
  writeIndented(item.review, indentation, Style::plain);
  closeBlock();
}

void ItemRenderer::showItem(const ContextCompactionItem&, ItemStage stage) {
  if (stage == ItemStage::completed) note("The history was compacted.");
}

void ItemRenderer::showItem(const WebSearchItem& item, ItemStage stage) {
  if (stage == ItemStage::completed) note("web search: " + item.query);
}

void ItemRenderer::showItem(const ImageViewItem& item, ItemStage stage) {
  if (stage == ItemStage::completed) note("looked at " + item.path);
}

void ItemRenderer::showItem(const ImageGenerationItem& item, ItemStage stage) {
  if (stage == ItemStage::completed) note("made an image: " + item.savedPath.value_or(item.status));
}

void ItemRenderer::showItem(const SleepItem& item, ItemStage stage) {
  if (stage == ItemStage::started) note("waits " + durationText(item.durationMilliseconds.value_or(0)));
}

void ItemRenderer::showItem(const SubAgentActivityItem& item, ItemStage stage) {
  if (stage == ItemStage::completed) note("agent " + item.agentPath.value_or("") + ": " + item.kind.rawValue);
}

void ItemRenderer::showItem(const ErrorItem& item, ItemStage stage) {
  if (stage == ItemStage::completed) note("error: " + item.message, Style::red);
}

void ItemRenderer::showItem(const UnknownThreadItem& item, ItemStage stage) {
  if (stage == ItemStage::completed) note("(" + item.itemType + ")");
}

}  // namespace ormel::chat
