// Holds a conversation on the main thread, in a main loop of GLib. Ctrl-C ends the turn and then the program.
// Usage: glib-loop [SERVER] [QUESTION]

#include <OrmelSDK/Events/TextNews.h>
#include <OrmelSDK/LoopScheduler.h>
#include <OrmelSDK/Ormel.h>

#include <glib-unix.h>
#include <glib.h>
#include <signal.h>

#include <algorithm>
#include <iostream>

namespace {

/// The scheduler as a source of events for a `GMainContext`.
struct SchedulerSource {
  GSource base;
  ormel::LoopScheduler* scheduler;

  static ormel::LoopScheduler& of(GSource* source) { return *reinterpret_cast<SchedulerSource*>(source)->scheduler; }

  static gboolean prepare(GSource* source, int* milliseconds) {
    const auto time = of(source).timeToNextTimer();
    if (!time) return *milliseconds = -1, FALSE;
    const auto rounded = std::chrono::ceil<std::chrono::milliseconds>(*time).count();
    *milliseconds = static_cast<int>(std::min<std::int64_t>(rounded, G_MAXINT));
    return rounded == 0;
  }
  static gboolean check(GSource* source) { return of(source).timeToNextTimer() == std::chrono::nanoseconds(0); }
  static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
    of(source).runReady();
    return G_SOURCE_CONTINUE;
  }

  static GSource* attachTo(GMainContext* context, ormel::LoopScheduler& scheduler) {
    static GSourceFuncs functions{prepare, check, dispatch, nullptr, nullptr, nullptr};
    GSource* const source = g_source_new(&functions, sizeof(SchedulerSource));
    reinterpret_cast<SchedulerSource*>(source)->scheduler = &scheduler;
    g_source_set_can_recurse(source, TRUE);
    g_source_add_unix_fd(source, scheduler.descriptor(), G_IO_IN);
    g_source_attach(source, context);
    return source;
  }
};

ormel::Task<void> talk(ormel::Thread thread, std::string question, ormel::AbortSignal signal) {
  ormel::TurnOptions turnOptions;
  turnOptions.signal = signal;
  ormel::StreamedTurn turn = co_await thread.runStreamed(std::move(question), turnOptions);
  ormel::TextNews news;
  while (auto event = co_await turn.events.next()) {
    const ormel::NewText added = news.ofMessage(*event);
    std::cout << added.text << (added.isComplete ? "\n" : "") << std::flush;
  }
  co_await thread.close();
}

gboolean abortTurn(gpointer controller) {
  static_cast<const ormel::AbortController*>(controller)->abort();
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  ormel::OrmelOptions options;
  if (argumentCount > 1) options.ormelPathOverride = arguments[1];
  const std::string question = argumentCount > 2 ? arguments[2] : "Tell me about loops";

  ormel::LoopScheduler scheduler;
  ormel::AbortController controller;
  GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
  GSource* const source = SchedulerSource::attachTo(nullptr, scheduler);
  g_unix_signal_add(SIGINT, abortTurn, &controller);

  ormel::TaskResult<void> outcome;
  auto conversation = talk(ormel::Ormel(options).startThread(), question, controller.signal);
  std::move(conversation).onScheduler(scheduler).start([&](ormel::TaskResult<void> result) {
    outcome = std::move(result);
    g_main_loop_quit(loop);
  });
  g_main_loop_run(loop);

  g_source_destroy(source);
  g_source_unref(source);
  g_main_loop_unref(loop);
  outcome.take();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return error.isAborted() ? 0 : 1;
}
