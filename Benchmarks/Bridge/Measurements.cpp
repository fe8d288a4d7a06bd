#include "Measurements.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Partner.h"
#include "Support/Frames.h"
#include "Workload.h"

namespace ormel::benchmarks {

namespace {

using Clock = std::chrono::steady_clock;

double microsecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double timeBatch(Partner& partner, int exchanges) {
  const auto start = Clock::now();
  for (int exchange = 0; exchange < exchanges; ++exchange) partner.exchange();
  return microsecondsSince(start) / exchanges;
}

double timeStart(const std::string& executable, const testing::UnixListener& listener) {
  const auto options = partnerOptions(listener.path());
  const auto start = Clock::now();
  testing::ChildProgram program(executable, options);
  const testing::Descriptor connection = listener.accept();
  const double elapsed = microsecondsSince(start);
  program.closeInput();
  program.wait();
  return elapsed;
}

std::size_t drainLine(int descriptor) {
  std::vector<char> block(std::size_t{64} << 10);
  std::size_t size = 0;
  for (;;) {
    const ssize_t got = ::read(descriptor, block.data(), block.size());
    if (got <= 0) return size;
    size += static_cast<std::size_t>(got);
    if (block[static_cast<std::size_t>(got) - 1] == '\n') return size;
  }
}

}  // namespace

Comparison measureRoundTrips(std::string_view request, std::string_view result, int batches, int exchangesPerBatch) {
  Partner bridge(ORMEL_BRIDGE_EXECUTABLE, request, result);
  Partner relay(ORMEL_RELAY_EXECUTABLE, request, result);
  timeBatch(bridge, exchangesPerBatch);
  timeBatch(relay, exchangesPerBatch);
  std::vector<double> bridgeTimes;
  std::vector<double> relayTimes;
  for (int batch = 0; batch < batches; ++batch) {
    bridgeTimes.push_back(timeBatch(bridge, exchangesPerBatch));
    relayTimes.push_back(timeBatch(relay, exchangesPerBatch));
  }
  return {median(std::move(bridgeTimes)), median(std::move(relayTimes))};
}

Comparison measureStarts(int starts) {
  const testing::TemporaryDirectory directory;
  const testing::UnixListener listener(directory.path() / "socket");
  std::vector<double> bridgeTimes;
  std::vector<double> relayTimes;
  for (int start = 0; start < starts; ++start) {
    bridgeTimes.push_back(timeStart(ORMEL_BRIDGE_EXECUTABLE, listener));
    relayTimes.push_back(timeStart(ORMEL_RELAY_EXECUTABLE, listener));
  }
  return {median(std::move(bridgeTimes)), median(std::move(relayTimes))};
}

// The reply is never whole in this process: a child that is started counts its parent's peak as its own.
std::size_t measurePeakMemory(std::size_t size, const std::string& head, const std::string& piece,
                              const std::string& tail) {
  const testing::TemporaryDirectory directory;
  const testing::UnixListener listener(directory.path() / "socket");
  testing::ChildProgram bridge(ORMEL_BRIDGE_EXECUTABLE, partnerOptions(listener.path()));
  const testing::Descriptor connection = listener.accept();
  testing::setNonBlocking(connection.number(), false);
  bridge.write("{\"id\":1}\n");
  testing::readFrame(connection.number());

  std::size_t answerSize = 0;
  std::thread client([&] { answerSize = drainLine(bridge.outputDescriptor()); });
  writeBlocking(connection.number(), testing::frameLength(static_cast<std::uint32_t>(size)));
  writeBlocking(connection.number(), head);
  std::size_t left = size - head.size() - tail.size();
  std::string block;
  while (block.size() < (std::size_t{1} << 16)) block.append(piece);
  for (; left >= block.size(); left -= block.size()) writeBlocking(connection.number(), block);
  for (; left >= piece.size(); left -= piece.size()) writeBlocking(connection.number(), piece);
  writeBlocking(connection.number(), std::string(left, ' ') + tail);
  client.join();

  bridge.closeInput();
  const testing::ChildEnd end = bridge.wait();
  if (end.status != 0 || answerSize < size / 2) throw std::runtime_error("the bridge did not pass the reply on");
#ifdef __APPLE__
  return static_cast<std::size_t>(end.usage.ru_maxrss);
#else
  return static_cast<std::size_t>(end.usage.ru_maxrss) << 10;
#endif
}

}  // namespace ormel::benchmarks
