#include "OrmelSDK/AppServerRun/TurnRun/Campaign/CampaignThread.h"

#include <algorithm>
#include <utility>

#include "OrmelSDK/Base/OrmelProcessError.h"
#include "OrmelSDK/Base/ThreadRunError.h"
#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"

namespace ormel::testing {

namespace {

/// Two calls that follow each other are over after about so many steps.
constexpr std::uint64_t stepsOfInterest = 120;

}  // namespace

CampaignThread::CampaignThread(CampaignWorld& world, std::optional<std::string> threadID)
    : world_(world), next_(world.observer()) {
  auto conversation =
      std::make_shared<detail::Conversation>(world.configuration, std::move(threadID),
                                             detail::ServerServices(world.scheduler, world.server, world.blockingWork));
  conversation_ = conversation;
  lastID_ = conversation->id();
  oracle_.emplace(world, conversation_);
  world.observeBy(this);
  world.open(conversation->reusableRun());
  thread_.emplace(std::move(conversation));
}

CampaignThread::~CampaignThread() { world_.observeBy(next_); }

// The application's actions.

ThreadCallRecord& CampaignThread::newCall(ThreadCallKind kind) {
  auto& record = *calls_.emplace_back(std::make_unique<ThreadCallRecord>());
  record.kind = kind;
  record.name = "call-" + std::to_string(calls_.size()) + ".";
  return record;
}

ThreadCallRecord& CampaignThread::call(ThreadCallKind kind, std::optional<std::uint64_t> readsAtMost) {
  auto& record = newCall(kind);
  record.readsAtMost = readsAtMost;
  launch(record);
  return record;
}

ThreadCallRecord& CampaignThread::callWithin(ThreadCallKind kind, std::chrono::nanoseconds timeout) {
  auto& record = newCall(kind);
  record.timeout = timeout;
  launch(record);
  return record;
}

ThreadCallRecord& CampaignThread::callAborted(ThreadCallKind kind) {
  auto& record = newCall(kind);
  record.controller.abort();
  launch(record);
  return record;
}

void CampaignThread::launch(ThreadCallRecord& record) {
  if (!thread_) {
    record.isOver = true;
    record.error = "dropped";
    return;
  }
  record.idBefore = thread_->id();
  record.wasAlone = underWay_ == 0 && !mayRunUnseen_;
  for (const auto& other : calls_) {
    if (other.get() != &record && !other->isOver) other->wasAlone = false;
  }
  ++underWay_;
  wasUnderWay_ = true;
  world_.launch(noteOutcome(*this, record, begin(record)), record.stop.get_token());
}

Task<void> CampaignThread::begin(ThreadCallRecord& record) {
  TurnOptions options;
  options.signal = record.controller.signal;
  if (record.kind == ThreadCallKind::run || record.kind == ThreadCallKind::turn) options.timeout = record.timeout;
  switch (record.kind) {
    case ThreadCallKind::run:
      return wait(*this, record, thread_->run(record.name, options));
    case ThreadCallKind::turn:
      return follow(*this, record, thread_->runStreamed(record.name, options));
    case ThreadCallKind::review:
      return follow(
          *this, record,
          thread_->startReviewStreamed(ReviewTarget::custom(record.name), ReviewDelivery::inline_, options.signal));
    case ThreadCallKind::compaction:
      return follow(*this, record, thread_->compactStreamed(options.signal));
    case ThreadCallKind::side:
      break;
  }
  return follow(*this, record, thread_->runSideConversationStreamed(record.name, "be brief", options));
}

Task<void> CampaignThread::wait(CampaignThread& self, ThreadCallRecord& record, Task<Turn> running) {
  self.oracle_->begins(record);
  auto turn = co_await std::move(running);
  record.wasAccepted = true;
  for (const ThreadItem& item : turn.items) {
    if (item.agentMessageText()) record.items.push_back(wordsOfItem(encode(item)));
  }
  record.turn = std::move(turn);
}

Task<void> CampaignThread::follow(CampaignThread& self, ThreadCallRecord& record, Task<StreamedTurn> starting) {
  self.oracle_->begins(record);
  auto streamed = co_await std::move(starting);
  record.wasAccepted = true;
  self.oracle_->accepted(record);
  if (record.kind == ThreadCallKind::turn && record.wasAlone && self.thread_) {
    self.world_.require(self.id().has_value(), "a turn that was accepted has a thread that is known");
  }
  auto reading = read(self, record, std::move(streamed));
  co_await std::move(reading);
}

Task<void> CampaignThread::read(CampaignThread& self, ThreadCallRecord& record, StreamedTurn streamed) {
  std::uint64_t count = 0;
  while (true) {
    if (record.readsAtMost && count++ == *record.readsAtMost) {
      record.wasLeftUnread = true;
      co_return;
    }
    const auto event = co_await streamed.events.next();
    if (!event) co_return;
    self.note(record, *event);
  }
}

Task<void> CampaignThread::noteOutcome(CampaignThread& self, ThreadCallRecord& record, Task<void> application) {
  try {
    co_await std::move(application);
  } catch (const CancelledError& error) {
    record.wasCancelled = true;
    record.error = error.what();
  } catch (const ThreadRunError& error) {
    record.error = error.what();
  } catch (const OrmelProcessError& error) {
    record.error = error.what();
  } catch (const TimeoutError& error) {
    record.error = error.what();
  }
  self.noteEnd(record);
}

void CampaignThread::join(ThreadJoin::Kind kind) {
  if (!thread_) return;
  ThreadJoin& join = *joins_.emplace_back(std::make_unique<ThreadJoin>());
  join.kind = kind;
  join.name = "join-" + std::to_string(joins_.size()) + ".";
  if (kind == ThreadJoin::Kind::close) world_.beClosed();
  world_.begin(follow(*this, join, taskOf(join)), kind == ThreadJoin::Kind::steer);
}

Task<void> CampaignThread::taskOf(const ThreadJoin& join) const {
  switch (join.kind) {
    case ThreadJoin::Kind::steer:
      return thread_->steer(join.name);
    case ThreadJoin::Kind::interrupt:
      return thread_->interrupt();
    case ThreadJoin::Kind::answer:
      return thread_->submitRequestUserInput("item-1", {{"size", {"big"}}});
    case ThreadJoin::Kind::idle:
      return thread_->idle();
    case ThreadJoin::Kind::close:
      break;
  }
  return thread_->close();
}

Task<void> CampaignThread::follow(CampaignThread& self, ThreadJoin& join, Task<void> joining) {
  self.oracle_->begins(join);
  try {
    co_await std::move(joining);
  } catch (const Error& error) {
    join.error = error.what();
  }
  join.isOver = true;
  if (join.kind == ThreadJoin::Kind::close) self.wasClosed_ = true;
  self.oracle_->ended(join);
  self.world_.mix(join.error ? std::string_view(*join.error) : std::string_view("joined"));
}

bool CampaignThread::isOutOfUse() const { return wasClosed_ || !world_.hasRun(); }

void CampaignThread::atAnyStep(std::function<void()> action) { world_.atAnyStep(std::move(action), stepsOfInterest); }

void CampaignThread::settle() {
  world_.settle();
  for (const auto& record : calls_) world_.require(record->isOver, "each call ends");
  world_.require(!isBusy(), "a thread is idle when nothing is left to do");
  mayRunUnseen_ = false;
}

void CampaignThread::close() {
  settle();
  drop();
  world_.settle();
  world_.require(conversation_.expired(), "nothing holds a thread that is let go of");
  world_.close();
}

std::optional<std::string> CampaignThread::id() const {
  const auto conversation = conversation_.lock();
  return conversation ? conversation->id() : std::nullopt;
}

bool CampaignThread::isBusy() const {
  const auto conversation = conversation_.lock();
  return conversation && conversation->currentOperation();
}

// The promises that hold at all times.

void CampaignThread::serverSent(const InMemoryProcess& process, const JSONValue& message) {
  if (next_) next_->serverSent(process, message);
  oracle_->serverSent(process, message);
}

void CampaignThread::runWrote(const detail::AppServerTurnRun& run, const InMemoryProcess& process,
                              const JSONValue& message) {
  if (next_) next_->runWrote(run, process, message);
  oracle_->runWrote(run, process, message);
}

void CampaignThread::stepped(const detail::AppServerTurnRun* run) {
  if (next_) next_->stepped(run);
  oracle_->stepped(run);
  const auto conversation = conversation_.lock();
  if (!conversation) return;
  const auto id = conversation->id();
  if (id != lastID_) {
    world_.require(id.has_value(), "an id that is known stays known");
    world_.require(wasUnderWay_ || mayRunUnseen_, "the id changes with an operation only");
    world_.mix(*id);
  }
  lastID_ = id;
  wasUnderWay_ = underWay_ > 0;
  const auto operation = conversation->currentOperation();
  if (operation) {
    world_.require(operation->generation >= newestGeneration_, "an operation is not replaced by an older one");
    newestGeneration_ = operation->generation;
  } else if (lastGeneration_ && run) {
    world_.require(run->stream().currentOperationGeneration() != lastGeneration_,
                   "a thread is busy as long as its run is");
  }
  lastGeneration_ = operation ? std::optional(operation->generation) : std::nullopt;
  world_.mix(lastGeneration_.value_or(0));
}

// The application's view.

void CampaignThread::note(ThreadCallRecord& record, const ThreadEvent& event) {
  world_.mix(event.value.index());
  if (record.turnsEnded() > 0) world_.breaks("the end of a turn is its last event");
  if (const auto* started = std::get_if<ThreadStartedEvent>(&event.value)) {
    record.threadsStarted.push_back(started->threadID);
  } else if (const auto* completed = std::get_if<ItemCompletedEvent>(&event.value)) {
    // The others are those of answered requests.
    if (completed->item.agentMessageText()) record.items.push_back(wordsOfItem(encode(completed->item)));
  } else if (std::holds_alternative<TurnCompletedEvent>(event.value)) {
    ++record.turnsCompleted;
  } else if (std::holds_alternative<TurnFailedEvent>(event.value)) {
    ++record.turnsFailed;
  }
}

void CampaignThread::noteEnd(ThreadCallRecord& record) {
  record.isOver = true;
  --underWay_;
  world_.mix(record.error ? std::string_view(*record.error) : std::string_view("plain end"));
  // The operation goes on when its reader goes, be it that a cancelled or a failed turn is not read to its end.
  const bool isRead = !record.wasLeftUnread && !(record.kind == ThreadCallKind::run && record.error);
  if (!isRead || record.wasCancelled) mayRunUnseen_ = true;
  if (underWay_ == 0 && !mayRunUnseen_ && isBusy()) world_.breaks("a thread is idle once the end of its call is seen");
  if (thread_ && record.wasAlone) checkID(record);
  oracle_->ended(record);
  checkTurn(record);
}

void CampaignThread::checkID(const ThreadCallRecord& record) {
  const auto now = id();
  if (!record.isOfMainThread()) {
    if (now != record.idBefore) world_.breaks("the id is that of the main conversation again");
  } else if (!record.wasAccepted && record.kind == ThreadCallKind::turn) {
    if (now != record.idBefore) world_.breaks("a turn that did not start leaves the id as it was");
  } else if (record.endedPlainly()) {
    if (!now) world_.breaks("a turn that ended has a thread that is known");
    if (record.kind == ThreadCallKind::turn && record.threadsStarted != std::vector{now.value_or("")}) {
      world_.breaks("the id is that of the turn's thread");
    }
  }
}

void CampaignThread::checkTurn(const ThreadCallRecord& record) const {
  if (record.endedPlainly() && record.kind != ThreadCallKind::run) {
    world_.require(record.turnsEnded() == 1, "a plain end follows the end of the turn");
  }
  if (record.error) world_.require(record.turnsEnded() == 0, "a failed operation has no ended turn");
  world_.require(!record.wasCancelled || record.stop.stop_requested(), "only a cancelled caller is cancelled");
  if (!record.turn) return;
  world_.require(record.turn->usage.has_value(), "a turn that ended tells its tokens");
  std::string response;
  for (const ThreadItem& item : record.turn->items) {
    if (const auto text = item.agentMessageText()) response = std::string_view(*text);
  }
  world_.require(record.turn->finalResponse == response, "the last message is the response");
}

void CampaignThread::requireErrors(const ThreadCallRecord& record, const std::vector<std::string_view>& allowed) const {
  if (!record.error) return;
  const bool isAllowed = std::any_of(allowed.begin(), allowed.end(),
                                     [&record](std::string_view text) { return record.error->starts_with(text); });
  world_.require(isAllowed, "the call may not fail with: " + *record.error);
}

void CampaignThread::requirePlainEnd(const ThreadCallRecord& record) const {
  const bool isCompaction = record.kind == ThreadCallKind::compaction;
  if (isCompaction) requireErrors(record, {"Stream finished"});
  world_.require(isCompaction || record.endedPlainly(),
                 "nothing keeps a call from its end: " + record.error.value_or("no error"));
  if (!record.endedPlainly()) return;
  world_.require(record.items.size() == CampaignServer::itemsOfTurn, "all items of a turn come before its end");
}

}  // namespace ormel::testing
