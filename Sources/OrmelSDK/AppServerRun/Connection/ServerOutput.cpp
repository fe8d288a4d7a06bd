#include "OrmelSDK/AppServerRun/Connection/ServerOutput.h"

#include "OrmelSDK/Concurrency/ConcurrencyErrors.h"
#include "OrmelSDK/Platform/ChunkBuffers.h"

namespace ormel::detail {

Task<bool> ServerOutput::nextChunk() {
  giveBackChunkBuffer(std::move(chunk_));
  std::optional<ByteBuffer> chunk;
  try {
    chunk = co_await chunks_.next();
  } catch (const AbandonedError&) {
    // The connection was closed from this side.
  } catch (const CancelledError&) {
    if (!isClosed()) throw;
  }
  if (chunk) {
    chunk_ = *std::move(chunk);
    lines_.append(chunk_.view());
  } else {
    hasEnded_ = true;
  }
  co_return !hasEnded_;
}

}  // namespace ormel::detail
