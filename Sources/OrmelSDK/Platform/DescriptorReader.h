#pragma once

#include <exception>
#include <memory>
#include <mutex>
#include <optional>

#include "OrmelSDK/Platform/PipeReader.h"
#include "OrmelSDK/Platform/WatchedDescriptor.h"

namespace ormel::detail {

/// Reads a real pipe on the threads of an event loop.
class DescriptorReader final : public PipeReader, public WatchedDescriptor {
 public:
  /// Fails with `ProcessLaunchError` when the system has no room to watch one more descriptor.
  DescriptorReader(EventLoop& loop, FileDescriptor descriptor);

  void start(PipeReadHandlers handlers) override;
  void stop() noexcept override;
  bool hasUnreadBytes() const noexcept override;

 private:
  using Handlers = std::shared_ptr<const PipeReadHandlers>;

  /// The outcome of a read.
  struct Found {
    ByteBuffer chunk;
    bool isEnd = false;
    /// There may be more: another change need not come first.
    bool mayHaveMore = false;
  };

  void ready(bool hungUp) noexcept override;
  Handlers currentHandlers();
  bool readAndDeliver(const PipeReadHandlers& handlers, bool hungUp);
  void fail(const PipeReadHandlers& handlers, const std::exception_ptr& failure);
  std::optional<Found> read(bool hungUp);
  Handlers closeLocked() noexcept;

  mutable std::mutex mutex_;
  Handlers handlers_;
  /// Set while there are handlers.
  std::shared_ptr<WatchedDescriptor> keepsItself_;
};

}  // namespace ormel::detail
