// Signals that interrupt a read or write need a handler, which cannot be set in the bridge's process: these tests run
// its pieces in this one, on real descriptors.

#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <limits>
#include <thread>

#include "BridgeTest.h"
#include "TessellaBrowserMCP/BridgeFailure.h"
#include "TessellaBrowserMCP/DescriptorIO.h"
#include "TessellaBrowserMCP/LineReader.h"
#include "TessellaBrowserMCP/LineWriter.h"
#include "TessellaBrowserMCP/NativePipeClient.h"
#include "TessellaBrowserMCP/OutputError.h"

namespace ormel::testing {
namespace {

std::atomic<int> handledSignals = 0;

/// Interrupts the blocking calls of the thread that it was made on.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction action{};
    action.sa_handler = [](int) { handledSignals.fetch_add(1); };
    sigaction(SIGUSR1, &action, &before_);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;
  ~Interruptions() { sigaction(SIGUSR1, &before_, nullptr); }

  /// Returns when the handler has run many times. Between signals the thread does nothing but its blocking call, so all
  /// signals but perhaps the first interrupt that call.
  void interrupt() const {
    for (int round = 0; round < 50; ++round) {
      const int handled = handledSignals.load();
      // Sent until it is handled: the thread sanitizer puts a signal off that comes just before the call blocks.
      while (handledSignals.load() == handled) {
        pthread_kill(thread_, SIGUSR1);
        std::this_thread::yield();
      }
    }
  }

 private:
  pthread_t thread_ = pthread_self();
  struct sigaction before_{};
};

TEST(Interruption, DoesNotDisturbAnExchangeWithTheHost) {
  TemporaryDirectory directory;
  UnixListener listener(directory.path() / "socket");
  const Interruptions interruptions;
  NativePipeClient client(listener.path());
  const std::string text(std::size_t{6} << 20, 'x');
  std::thread host([&] {
    const Descriptor connection = listener.accept();
    awaitReadable(connection.number());
    interruptions.interrupt();  // in the middle of the client's write
    readFrame(connection.number());
    interruptions.interrupt();  // before the length
    const std::string reply = frame(R"({"id":1,"result":")" + text + "\"}");
    writeAll(connection.number(), std::string_view(reply).substr(0, 2));
    interruptions.interrupt();  // inside the length
    writeAll(connection.number(), std::string_view(reply).substr(2, 1000));
    interruptions.interrupt();  // inside the body
    writeAll(connection.number(), std::string_view(reply).substr(1002));
  });
  const JSONValue result = client.request("t", "w", JSONValue::object({{"id", 1}, {"text", text}}));
  host.join();
  EXPECT_EQ(result, JSONValue(text));
}

TEST(Interruption, DoesNotDisturbReadingLines) {
  const Pipe input = makePipe();
  const Interruptions interruptions;
  std::thread client([&] {
    interruptions.interrupt();
    writeAll(input.writeEnd.number(), "fir");
    interruptions.interrupt();
    writeAll(input.writeEnd.number(), "st\n");
  });
  LineReader reader(input.readEnd.number());
  EXPECT_EQ(reader.next(), "first");
  client.join();
}

TEST(Interruption, DoesNotDisturbWritingALine) {
  const Pipe output = makePipe();
  const Interruptions interruptions;
  const std::string text(std::size_t{2} << 20, 'x');
  std::string received;
  std::thread client([&] {
    awaitReadable(output.readEnd.number());
    interruptions.interrupt();
    received = readExactly(output.readEnd.number(), text.size() + 3);
  });
  LineWriter(output.writeEnd.number()).write(JSONValue(text));
  client.join();
  EXPECT_EQ(received, "\"" + text + "\"\n");
}

TEST(LineWriter, WritesTheLineFeedInAWriteOfItsOwn) {
  // A datagram socket keeps the bounds of each write.
  const auto [output, client] = makeSocketPair(SOCK_DGRAM);
  LineWriter(output.number()).write(JSONValue::array({1, "two"}));
  std::string written;
  readSome(client.number(), written);
  EXPECT_EQ(written, R"([1,"two"])");
  written.clear();
  readSome(client.number(), written);
  EXPECT_EQ(written, "\n");
}

TEST(LineWriter, WritesNothingForAValueWithoutJSONText) {
  Pipe output = makePipe();
  LineWriter(output.writeEnd.number()).write(JSONValue::array({"begun", std::numeric_limits<double>::infinity()}));
  LineWriter(output.writeEnd.number()).write(JSONValue(std::numeric_limits<double>::quiet_NaN()));
  const std::string longText(std::size_t{1} << 20, 'x');
  LineWriter(output.writeEnd.number()).write(JSONValue::array({longText, std::numeric_limits<double>::infinity()}));
  output.writeEnd.reset();
  EXPECT_EQ(readToEnd(output.readEnd.number()), "");
}

TEST(LineWriter, FailsWithTheErrnoOfTheWrite) {
  const Pipe output = makePipe();
  try {
    LineWriter(output.readEnd.number()).write(JSONValue());
    FAIL() << "wrote to the read end";
  } catch (const OutputError& error) {
    EXPECT_EQ(error.description(), "Could not write to standard output (errno " + std::to_string(EBADF) + ").");
  }
}

std::vector<std::string> linesOf(std::string_view input) {
  Pipe pipe = makePipe();
  writeAll(pipe.writeEnd.number(), input);
  pipe.writeEnd.reset();
  std::vector<std::string> lines;
  LineReader reader(pipe.readEnd.number());
  while (const auto line = reader.next()) lines.emplace_back(*line);
  EXPECT_FALSE(reader.next());
  return lines;
}

TEST(LineReader, RemovesOneLineEndFromEachLine) {
  using ::testing::ElementsAre;
  EXPECT_THAT(linesOf(""), ElementsAre());
  EXPECT_THAT(linesOf("\n"), ElementsAre(""));
  EXPECT_THAT(linesOf("\r\n"), ElementsAre(""));
  EXPECT_THAT(linesOf("a\nb\r\nc"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(linesOf("a\r\r\n\n\rb\n"), ElementsAre("a\r", "", "\rb"));
  EXPECT_THAT(linesOf("a\r"), ElementsAre("a\r"));
}

TEST(LineReader, KeepsLinesThatCrossItsBlocks) {
  Pipe pipe = makePipe();
  std::vector<std::string> lines;
  for (const std::size_t size : {100'000u, 0u, 65'535u, 65'536u, 65'537u, 3'000'000u, 1u, 200'000u}) {
    lines.emplace_back(size, static_cast<char>('a' + lines.size()));
  }
  std::thread client([&] {
    for (const auto& line : lines) writeAll(pipe.writeEnd.number(), line + "\n");
    pipe.writeEnd.reset();
  });
  LineReader reader(pipe.readEnd.number());
  for (const auto& line : lines) EXPECT_TRUE(reader.next() == line) << "line of " << line.size();
  EXPECT_FALSE(reader.next());
  client.join();
}

TEST(LineReader, TakesInputThatCannotBeReadAsEnded) {
  LineReader reader(-1);
  EXPECT_FALSE(reader.next());
}

/// Lets no further descriptor be opened.
class NoDescriptorsLeft {
 public:
  NoDescriptorsLeft() {
    getrlimit(RLIMIT_NOFILE, &before_);
    struct rlimit limit = before_;
    limit.rlim_cur = 0;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  NoDescriptorsLeft(const NoDescriptorsLeft&) = delete;
  NoDescriptorsLeft& operator=(const NoDescriptorsLeft&) = delete;
  ~NoDescriptorsLeft() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  struct rlimit before_{};
};

BridgeFailure failureOfConnecting(const std::string& path) {
  const NoDescriptorsLeft limit;
  try {
    NativePipeClient client(path);
  } catch (const BridgeFailure& failure) {
    return failure;
  }
  throw std::logic_error("connected without a descriptor");
}

TEST(NativePipeClient, ReportsTheErrnoWhenNoSocketCanBeMade) {
  EXPECT_EQ(failureOfConnecting(std::string(103, 'p')).description(),
            BridgeFailure::connectFailed(EMFILE).description());
}

TEST(NativePipeClient, RefusesALongPathBeforeItMakesASocket) {
  EXPECT_EQ(failureOfConnecting(std::string(104, 'p')).kind(), BridgeFailure::Kind::invalidSocketPath);
}

}  // namespace
}  // namespace ormel::testing
