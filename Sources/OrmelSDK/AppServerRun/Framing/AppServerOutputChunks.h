#pragma once

#include <functional>
#include <memory>

#include "OrmelSDK/Base/ByteBuffer.h"
#include "OrmelSDK/Concurrency/EventChannel.h"
#include "OrmelSDK/Platform/PipeReader.h"

namespace ormel::detail {

/// Callbacks about a pipe's reading, on threads of the pool, each before the consumer of the chunks can see it. They
/// must be cheap and must not throw.
struct AppServerOutputChunkCallbacks {
  AppServerOutputChunkCallbacks() = default;

  /// Called before bytes are taken out of the pipe.
  std::function<void()> onReadStart;
  /// Called when nothing was there to be taken out.
  std::function<void()> onNothing;
  /// Called before a chunk is yielded.
  std::function<void()> onChunkEnqueued;
  /// Called before the channel is finished.
  std::function<void()> onEOF;
};

/// Reads a pipe into a channel, chunk by chunk as they come, and finishes the channel at the end of file. A consumer
/// that goes away stops the reading.
EventChannel<ByteBuffer> appServerOutputChunks(
    const std::shared_ptr<PipeReader>& from, AppServerOutputChunkCallbacks callbacks = AppServerOutputChunkCallbacks());

}  // namespace ormel::detail
