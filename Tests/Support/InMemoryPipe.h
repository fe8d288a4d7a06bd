#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/SimulatedScheduler.h"
#include "OrmelSDK/Platform/PipeReader.h"

namespace ormel::testing {

/// A pipe of unlimited capacity. Noticing that it is readable, taking bytes out of it and handing them over are three
/// pieces of the scheduler; how many bytes a read takes is chosen by the scheduler's seed.
class InMemoryPipe final : public detail::PipeReader, public std::enable_shared_from_this<InMemoryPipe> {
 public:
  explicit InMemoryPipe(SimulatedScheduler& scheduler) noexcept : scheduler_(scheduler) {}

  void write(std::string_view bytes);
  /// Each read that begins from now on takes so long.
  void slowReads(std::chrono::nanoseconds delay) noexcept { delay_ = delay; }
  void closeWriteEnd();

  void start(detail::PipeReadHandlers handlers) override;
  void stop() noexcept override;
  bool hasUnreadBytes() const noexcept override { return isOpen_ && !bytes_.empty(); }

  bool isWriteEndOpen() const noexcept { return isWriteEndOpen_; }
  /// Whether the read end is open.
  bool isOpen() const noexcept { return isOpen_; }

 private:
  using Handlers = std::shared_ptr<const detail::PipeReadHandlers>;

  void readIfReadable();
  void beginRead();
  void take(const Handlers& handlers);
  void deliver(const Handlers& handlers, detail::ByteBuffer chunk);
  detail::ByteBuffer takeChunk();

  SimulatedScheduler& scheduler_;
  Handlers handlers_;
  std::chrono::nanoseconds delay_{0};
  Timer slowRead_;
  std::string bytes_;
  bool isWriteEndOpen_ = true;
  bool isOpen_ = true;
  bool isReading_ = false;
};

}  // namespace ormel::testing
