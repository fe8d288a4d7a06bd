#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Base/Export.h"
#include "OrmelSDK/Concurrency/ApplicationObject.h"
#include "OrmelSDK/Concurrency/Task.h"
#include "OrmelSDK/Concurrency/TaskResult.h"

namespace ormel {

/// A handler of the application gave no answer.
class ORMEL_EXPORT HandlerError : public Error {
 public:
  using Error::Error;

 protected:
  std::string generalAdvice() const override;
};

template <typename Signature>
class AsyncHandler;

namespace detail {

template <typename T>
struct AwaitedType {
  using Type = T;
};
template <typename T>
struct AwaitedType<Task<T>> {
  using Type = T;
};

/// The final result of a call of the function, whether returned at once or by a task.
template <typename Function, typename... Args>
using AwaitedResult = typename AwaitedType<std::invoke_result_t<Function&, Args...>>::Type;

/// Whether the callable is a null pointer, or a function object without a target. A closure without captures could be
/// compared too, by way of the pointer that it converts to.
template <typename Function>
bool isEmptyFunction(const Function& function) noexcept {
  if constexpr (std::is_function_v<Function> || std::is_empty_v<Function>) {
    return false;
  } else if constexpr (requires { function == nullptr; }) {
    return function == nullptr;
  } else {
    return false;
  }
}

[[noreturn]] void failForEmptyHandler();
[[noreturn]] void failForEmptyTask();

}  // namespace detail

/// A function given by the application that the library calls later and waits for. It is made from any callable that
/// returns the result, or a `Task` of the result:
///
///     options.commandApprovalHandler = [](const CommandApprovalRequest&) { return OrmelApprovalDecision::decline; };
///     options.commandApprovalHandler = [&](CommandApprovalRequest request) -> Task<OrmelApprovalDecision> {
///       const bool yes = co_await window.ask(request.command);
///       co_return yes ? OrmelApprovalDecision::accept : OrmelApprovalDecision::decline;
///     };
///
/// A callable may block for as long as it takes: the thread that calls it serves nothing else meanwhile. One that waits
/// for a person is better off returning a task, which holds no thread.
///
/// *Thread safety*: the callable may be called from several threads of the library at the same time.
///
/// *Object lifetimes*: copies share one callable, with whatever state it has; it need not be copyable. It lives as long
/// as any copy, and as any task made from one, and is destroyed on a thread that it may block. Arguments live until the
/// callable's task has ended, also where the callable takes them by reference.
///
/// *Errors*: what the callable or its task throws leaves the handler's task. A callable that returns an empty task
/// (moved from, awaited already, or `{}` from a function that is no coroutine) has not answered: `HandlerError`, as for
/// an empty function object.
template <typename Result, typename... Args>
class AsyncHandler<Result(Args...)> {
 public:
  template <typename Function>
    requires(!std::same_as<std::remove_cvref_t<Function>, AsyncHandler> &&
             std::invocable<std::decay_t<Function>&, Args...> &&
             (std::is_void_v<Result> ||
              std::is_convertible_v<detail::AwaitedResult<std::decay_t<Function>, Args...>, Result>))
  AsyncHandler(Function&& function)
      : callable_(detail::isEmptyFunction(function) ? nullptr
                                                    : detail::makeApplicationObject<CallableOf<std::decay_t<Function>>>(
                                                          std::forward<Function>(function))) {}

  AsyncHandler(const AsyncHandler&) = default;
  AsyncHandler& operator=(const AsyncHandler&) = default;

  /// A task that calls the callable once it is started.
  Task<Result> operator()(Args... args) const { return run(callable_, std::forward<Args>(args)...); }

 private:
  // No coroutine here depends on the callable's type: that of a lambda would give the frame's type no linkage.
  struct Callable {
    virtual ~Callable() = default;

    /// Gives a task, or sets `result`. A callable that forgot to answer does neither.
    virtual Task<Result> call(TaskResult<Result>& result, Args&... args) = 0;
  };

  template <typename Function>
  struct CallableOf final : Callable {
    template <typename Given>
      requires(!std::same_as<std::remove_cvref_t<Given>, CallableOf>)
    explicit CallableOf(Given&& given) : function(std::forward<Given>(given)) {}

    Task<Result> call(TaskResult<Result>& result, Args&... args) override {
      using Returned = std::invoke_result_t<Function&, Args...>;
      if constexpr (std::same_as<Returned, Task<Result>>) {
        return std::invoke(function, std::forward<Args>(args)...);
      } else if constexpr (detail::isTask<Returned>) {
        return converted(std::invoke(function, std::forward<Args>(args)...));
      } else if constexpr (std::is_void_v<Result>) {
        static_cast<void>(std::invoke(function, std::forward<Args>(args)...));
        result.setValue();
        return {};
      } else {
        result.setValue(std::invoke(function, std::forward<Args>(args)...));
        return {};
      }
    }

    Function function;
  };

  // Keeps the callable and the arguments alive to the end.
  static Task<Result> run(std::shared_ptr<Callable> callable, Args... args) {
    if (!callable) detail::failForEmptyHandler();
    TaskResult<Result> result;
    Task<Result> task = callable->call(result, args...);
    if (task) co_return co_await std::move(task);
    if (!result.hasValue()) detail::failForEmptyTask();
    co_return result.take();
  }

  template <typename Returned>
  static Task<Result> converted(Task<Returned> task) {
    if (!task) detail::failForEmptyTask();
    if constexpr (std::is_void_v<Result>) {
      co_await std::move(task);
    } else {
      co_return co_await std::move(task);
    }
  }

  std::shared_ptr<Callable> callable_;
};

}  // namespace ormel
