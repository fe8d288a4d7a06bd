#pragma once

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/PipeReader.h"

namespace ormel::detail {

/// Reads a real pipe on the threads of an I/O context.
class DescriptorReader final : public PipeReader, public std::enable_shared_from_this<DescriptorReader> {
 public:
  /// Fails with `ProcessLaunchError` when the system has no room to watch one more descriptor.
  DescriptorReader(asio::io_context& context, FileDescriptor descriptor);

  void start(PipeReadHandlers handlers) override;
  void stop() noexcept override;
  bool hasUnreadBytes() const noexcept override;

 private:
  using Handlers = std::shared_ptr<const PipeReadHandlers>;

  void waitLocked();
  void readWhatIsThere();
  Handlers handlersIfReadable();
  bool takeAndDeliver(const PipeReadHandlers& handlers);
  void fail(const PipeReadHandlers& handlers, std::exception_ptr failure);
  std::optional<ByteBuffer> take();
  Handlers closeLocked() noexcept;

  mutable std::mutex mutex_;
  mutable asio::posix::stream_descriptor descriptor_;
  Handlers handlers_;
};

}  // namespace ormel::detail
