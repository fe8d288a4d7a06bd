// Values for the pretty printers of Tools/gdb: PrintersTest.py stops in `look` and prints what lies one frame up.

#include <array>
#include <coroutine>
#include <optional>
#include <stdexcept>
#include <utility>

#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Events/ThreadEvent.h"
#include "OrmelSDK/Input/ReviewTarget.h"
#include "OrmelSDK/Items/ThreadItem.h"
#include "OrmelSDK/JSON/JSONValue.h"
#include "OrmelSDK/Options/OrmelConfigValue.h"
#include "OrmelSDK/Text/SharedText.h"

namespace {

using namespace ormel;

template <typename T>
using Coroutine = typename detail::TaskFrame<T>::Handle;

/// Suspends the coroutine that awaits it, and tells which one that is.
template <typename T>
class Pause final : public detail::PlaceAware {
 public:
  explicit Pause(Coroutine<T>& paused) noexcept : paused_(paused) {}
  bool await_ready() const noexcept { return false; }
  void await_suspend(Coroutine<T> coroutine) const noexcept { paused_ = coroutine; }
  void await_resume() const noexcept {}

 private:
  Coroutine<T>& paused_;
};

Task<int> doubled(int number, Coroutine<int>& paused) {
  Pause<int> pause(paused);
  co_await pause;
  if (number < 0) throw std::invalid_argument("negative");
  co_return 2 * number;
}

Task<void> waiting(Coroutine<void>& paused) {
  Pause<void> pause(paused);
  co_await pause;
}

/// Leaves a task that has ended as it is, so that it can be looked at.
class Kept final : public detail::Completion {
 public:
  void completed() noexcept override {}
};

template <typename Promise>
detail::Completion* resumeAndKeep(std::coroutine_handle<Promise> coroutine, Kept& kept) {
  auto* completion = std::exchange(coroutine.promise().completion, &kept);
  coroutine.resume();
  return completion;
}

[[gnu::noinline]] void look() { asm volatile(""); }

void lookAtValues() {
  const auto null = JSONValue();
  const auto yes = JSONValue(true);
  const auto no = JSONValue(false);
  const auto number = JSONValue(-2.5);
  const auto whole = JSONValue(1700000000);
  const auto text = JSONValue("a \"quoted\" word");
  const auto emptyText = JSONValue("");
  const auto message = JSONValue::decode(R"({"method":"turn/started","params":{"ids":[1,"two",null],"none":{}}})");
  const auto built =
      JSONValue::array({JSONValue(1), JSONValue::object({{"key", JSONValue("value")}}), JSONValue::array()});
  const JSONValue& inside = *message.find("params");
  [[maybe_unused]] const JSONObject& members = *inside.objectValue();
  [[maybe_unused]] const JSONArray& elements = *inside.find("ids")->arrayValue();
  auto source = JSONValue("moved");
  const auto moved = std::move(source);
  // In memory that is zero, so that what it does not hold is a text at a null address.
  static std::optional<JSONValue> nothing;

  const SharedText noText;
  SharedText shorter("Hello");
  SharedText longer = shorter;
  longer.append(", agent");

  AgentMessageItem agentMessage;
  agentMessage.text = "Hello";
  const ThreadItem item = agentMessage;
  const ThreadItem search = WebSearchItem();
  const ThreadEvent event = ItemUpdatedEvent{.item = item};
  const ThreadEvent recovery = AuthRecoveryCompletedEvent();
  const ReviewTarget target = ReviewCustom();
  const auto config = OrmelConfigValue(std::int64_t{7});
  look();
}

void lookAtTasks() {
  Coroutine<int> paused;
  Coroutine<int> failing;
  Coroutine<void> silent;
  const Task<int> none;
  const Task<int> fresh = doubled(1, paused);
  doubled(21, paused).start([](auto) noexcept {});
  doubled(-1, failing).start([](auto) noexcept {});
  waiting(silent).start([](auto) noexcept {});
  look();

  Kept kept;
  const std::array completions = {resumeAndKeep(paused, kept), resumeAndKeep(failing, kept),
                                  resumeAndKeep(silent, kept)};
  look();
  for (auto* completion : completions) completion->completed();
}

}  // namespace

int main() {
  lookAtValues();
  lookAtTasks();
}
