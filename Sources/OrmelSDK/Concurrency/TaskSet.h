#pragma once

#include <atomic>
#include <coroutine>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Concurrency/JointWait.h"
#include "OrmelSDK/Concurrency/Task.h"

namespace ormel::detail {

/// The value of a task beside those of other tasks.
template <typename T>
using JoinedValue = std::conditional_t<
    std::is_void_v<T>, std::monostate,
    std::conditional_t<std::is_reference_v<T>, std::reference_wrapper<std::remove_reference_t<T>>, T>>;

/// The end of a task that makes the other tasks of its set superfluous.
enum class Decision {
  /// The first failure: all values are wanted.
  byFailure,
  /// The first end: one value is wanted.
  byEnd,
};

/// Tasks that run side by side and are awaited together. The task that decides stops the others; those that have not
/// been started then never are.
class TaskSet : public JointWait {
 public:
  explicit TaskSet(Decision decision) noexcept : decision_(decision) {}

  /// Told by each task when it ends, with its failure if it has failed.
  void taskEnded(std::size_t index, const std::exception_ptr& failure) noexcept;

  void await_resume() {
    end();
    if (failure_) std::rethrow_exception(failure_);
  }

 protected:
  ~TaskSet() = default;

  bool isDecided() const noexcept { return decided_.load(std::memory_order_acquire) != nobody; }
  /// The task that has decided; asked after the end.
  std::size_t decider() const noexcept { return decided_.load(std::memory_order_relaxed); }
  void taskStarts() noexcept { checkIn(); }
  bool hasToWait() noexcept { return !checkOut(); }

 private:
  static constexpr std::size_t nobody = static_cast<std::size_t>(-1);

  const Decision decision_;
  std::atomic<std::size_t> decided_{nobody};
  std::exception_ptr failure_;
};

/// A task of a set; it stays where it is while the task runs.
template <typename T>
class JoinedTask final : private Completion {
 public:
  JoinedTask() noexcept = default;
  JoinedTask(const JoinedTask&) = delete;
  JoinedTask& operator=(const JoinedTask&) = delete;

  void adopt(Task<T>&& task, TaskSet& set, std::size_t index) noexcept {
    frame_ = TaskParts::takeFrame(std::move(task));
    set_ = &set;
    index_ = index;
  }

  void start() noexcept {
    auto& promise = frame_.promise();
    if (!promise.stopToken) promise.stopToken = &set_->token();
    startAlone(promise, frame_.handle(), *this);
  }

  JoinedValue<T> value() {
    if constexpr (std::is_void_v<T>) {
      frame_.promise().result.take();
      return {};
    } else {
      return frame_.promise().result.take();
    }
  }

 private:
  void completed() noexcept override { set_->taskEnded(index_, frame_.promise().result.error()); }

  TaskFrame<T> frame_;
  TaskSet* set_ = nullptr;
  std::size_t index_ = 0;
};

/// A set of tasks of any types.
template <typename... Ts>
class TaskPack final : public TaskSet {
 public:
  explicit TaskPack(Decision decision, Task<Ts>&&... tasks) : TaskSet(decision) {
    std::apply(
        [&](auto&... joined) {
          std::size_t index = 0;
          (joined.adopt(std::move(tasks), *this, index++), ...);
        },
        tasks_);
  }

  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> awaiting) {
    begin(awaiting);
    follow(stopTokenOf(awaiting));
    std::apply([&](auto&... task) { (startUnlessDecided(task), ...); }, tasks_);
    return hasToWait();
  }

  std::tuple<JoinedValue<Ts>...> values() {
    return std::apply([](auto&... task) { return std::tuple<JoinedValue<Ts>...>(task.value()...); }, tasks_);
  }

  std::size_t winner() const noexcept { return decider(); }
  std::variant<JoinedValue<Ts>...> winningValue() { return winningValue<0>(); }

 private:
  template <typename T>
  void startUnlessDecided(JoinedTask<T>& task) noexcept {
    if (isDecided()) return;
    taskStarts();
    task.start();
  }

  template <std::size_t index>
  std::variant<JoinedValue<Ts>...> winningValue() {
    if constexpr (index + 1 < sizeof...(Ts)) {
      if (index != decider()) return winningValue<index + 1>();
    }
    return std::variant<JoinedValue<Ts>...>(std::in_place_index<index>, std::get<index>(tasks_).value());
  }

  std::tuple<JoinedTask<Ts>...> tasks_;
};

/// A set of tasks of one type.
template <typename T>
class TaskList final : public TaskSet {
 public:
  TaskList(Decision decision, std::vector<Task<T>>&& tasks)
      : TaskSet(decision), count_(tasks.size()), tasks_(new JoinedTask<T>[tasks.size()]) {
    for (std::size_t index = 0; index < count_; ++index) tasks_[index].adopt(std::move(tasks[index]), *this, index);
  }

  template <typename Promise>
  bool await_suspend(std::coroutine_handle<Promise> awaiting) {
    begin(awaiting);
    follow(stopTokenOf(awaiting));
    for (std::size_t index = 0; index < count_ && !isDecided(); ++index) {
      taskStarts();
      tasks_[index].start();
    }
    return hasToWait();
  }

  std::vector<JoinedValue<T>> values() {
    std::vector<JoinedValue<T>> values;
    values.reserve(count_);
    for (std::size_t index = 0; index < count_; ++index) values.push_back(tasks_[index].value());
    return values;
  }

  std::size_t winner() const noexcept { return decider(); }
  JoinedValue<T> winningValue() { return tasks_[decider()].value(); }

 private:
  std::size_t count_;
  std::unique_ptr<JoinedTask<T>[]> tasks_;
};

}  // namespace ormel::detail
