// A window with a conversation, all of it on the thread of the window. Ctrl-C in the terminal closes it.
// Usage: qt-window [--ask TEXT] [SERVER]

#include <OrmelSDK/Events/TextNews.h>
#include <OrmelSDK/LoopScheduler.h>
#include <OrmelSDK/Ormel.h>

#include <QApplication>
#include <QCloseEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>
#include <csignal>
#include <iostream>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Runs a scheduler in the event loop of the application.
class LoopDriver {
 public:
  explicit LoopDriver(ormel::LoopScheduler& scheduler)
      : scheduler_(scheduler), ready_(scheduler.descriptor(), QSocketNotifier::Read) {
    timer_.setSingleShot(true);
    QObject::connect(&ready_, &QSocketNotifier::activated, [this] { run(); });
    QObject::connect(&timer_, &QTimer::timeout, [this] { run(); });
  }

 private:
  void run() {
    scheduler_.runReady();
    const auto time = scheduler_.timeToNextTimer();
    constexpr std::chrono::nanoseconds day = std::chrono::hours(24);
    if (time) timer_.start(std::chrono::ceil<std::chrono::milliseconds>(std::min(*time, day)));
  }

  ormel::LoopScheduler& scheduler_;
  QSocketNotifier ready_;
  QTimer timer_;
};

/// The end that the handler of SIGINT writes to; a handler may do little else.
int interruptWriteEnd = -1;

class Interrupts {
 public:
  explicit Interrupts(QWidget& window) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
    interruptWriteEnd = ends[1];
    notifier_ = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this, &window] {
      notifier_->setEnabled(false);
      window.close();
    });
    std::signal(SIGINT, [](int) { [[maybe_unused]] const auto written = write(interruptWriteEnd, "!", 1); });
  }

 private:
  std::unique_ptr<QSocketNotifier> notifier_;
};

class ConversationWindow final : public QWidget {
 public:
  ConversationWindow(ormel::Thread thread, ormel::LoopScheduler& loop) : thread_(std::move(thread)), loop_(loop) {
    setWindowTitle("A conversation");
    resize(560, 320);
    shown_.setReadOnly(true);
    prompt_.setPlaceholderText("Ask something");
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(&shown_);
    layout->addWidget(&prompt_);
    connect(&prompt_, &QLineEdit::returnPressed, [this] { ask(prompt_.text()); });
  }
  void ask(const QString& question) {
    prompt_.clear();
    prompt_.setEnabled(false);
    isAsking_ = true;
    shown_.appendPlainText("> " + question + "\n");
    answer(question.toStdString()).onScheduler(loop_).start([this](ormel::TaskResult<void> result) {
      answered(std::move(result));
    });
  }

 protected:
  /// The turn ends first, at the server too: a task that waits on the loop must not outlive it.
  void closeEvent(QCloseEvent* event) override {
    isClosing_ = true;
    if (!isAsking_) return QApplication::quit();
    controller_.abort();
    hide();
    event->ignore();
  }

 private:
  /// All of it runs on the thread of the window, so it may change the window without a lock.
  ormel::Task<void> answer(std::string question) {
    ormel::TurnOptions turnOptions;
    turnOptions.signal = controller_.signal;
    ormel::StreamedTurn turn = co_await thread_.runStreamed(std::move(question), turnOptions);
    ormel::TextNews news;
    while (auto event = co_await turn.events.next())
      show(QString::fromStdString(std::string(news.ofMessage(*event).text)));
  }

  void show(const QString& text) {
    shown_.moveCursor(QTextCursor::End);
    shown_.insertPlainText(text);
  }

  void answered(ormel::TaskResult<void> result) {
    isAsking_ = false;
    if (isClosing_) return QApplication::quit();
    try {
      result.take();
    } catch (const ormel::Error& error) {
      show(QString(error.what()) + "\n" + QString::fromStdString(error.advice()));
    }
    show("\n");
    prompt_.setEnabled(true);
    prompt_.setFocus();
  }

  ormel::Thread thread_;
  ormel::LoopScheduler& loop_;
  const ormel::AbortController controller_;
  QPlainTextEdit shown_;
  QLineEdit prompt_;
  bool isAsking_ = false;
  bool isClosing_ = false;
};

}  // namespace

int main(int argumentCount, char** arguments) try {
  QApplication application(argumentCount, arguments);
  QApplication::setQuitOnLastWindowClosed(false);
  QStringList words = QApplication::arguments().mid(1);
  const bool asks = words.size() > 1 && words.front() == "--ask";
  const QString question = asks ? words[1] : QString();
  if (asks) words = words.mid(2);

  ormel::OrmelOptions options;
  if (!words.isEmpty()) options.ormelPathOverride = words.front().toStdString();

  ormel::LoopScheduler loop;
  const LoopDriver driver(loop);
  ConversationWindow window(ormel::Ormel(options).startThread(), loop);
  const Interrupts interrupts(window);
  window.QWidget::show();
  if (asks) window.ask(question);
  return QApplication::exec();
} catch (const ormel::Error& error) {
  std::cerr << error.what() << '\n' << error.advice() << '\n';
  return 1;
}
