#include "OrmelSDK/Platform/ChunkBuffers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <thread>
#include <utility>

namespace ormel::detail {
namespace {

TEST(ChunkBuffers, AreEmptyAndHaveRoomForTheLargestChunk) {
  for (int round = 0; round < 2; ++round) {
    ByteBuffer buffer = takeChunkBuffer();
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.capacity(), largestChunk);
    buffer.append("read");
    giveBackChunkBuffer(std::move(buffer));
  }
}

TEST(ChunkBuffers, AreUsedAgain) {
  ByteBuffer buffer = takeChunkBuffer();
  const char* const place = buffer.data();
  giveBackChunkBuffer(std::move(buffer));
  EXPECT_EQ(takeChunkBuffer().data(), place);
}

TEST(ChunkBuffers, AreNotKeptIfTheyHaveGrownOrWereNeverFilled) {
  ByteBuffer grown = takeChunkBuffer();
  grown.append(std::string(largestChunk + 1, 'x'));
  giveBackChunkBuffer(std::move(grown));
  giveBackChunkBuffer(ByteBuffer());
  EXPECT_EQ(takeChunkBuffer().capacity(), largestChunk);
}

TEST(ChunkBuffers, AreFreedBeyondAFew) {
  std::array<ByteBuffer, 100> many;
  std::generate(many.begin(), many.end(), takeChunkBuffer);
  for (ByteBuffer& buffer : many) giveBackChunkBuffer(std::move(buffer));
  for (ByteBuffer& buffer : many) {
    buffer = takeChunkBuffer();
    EXPECT_EQ(buffer.capacity(), largestChunk);
  }
}

/// Fills a buffer and has a look whether anybody else has written to it.
bool hasBufferForItself(char mark) {
  ByteBuffer buffer = takeChunkBuffer();
  std::memset(buffer.room(largestChunk), mark, largestChunk);
  buffer.commit(largestChunk);
  std::this_thread::yield();
  const auto bytes = buffer.view();
  const bool isAlone = std::all_of(bytes.begin(), bytes.end(), [mark](char byte) { return byte == mark; });
  giveBackChunkBuffer(std::move(buffer));
  return isAlone;
}

TEST(ChunkBuffers, BelongToOneThreadAtATime) {
  constexpr int rounds = 200;
  std::array<int, 4> alone{};
  std::array<std::thread, 4> threads;
  for (std::size_t index = 0; index < threads.size(); ++index) {
    threads[index] = std::thread([&count = alone[index], mark = static_cast<char>('a' + index)] {
      for (int round = 0; round < rounds; ++round) count += hasBufferForItself(mark);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const int count : alone) EXPECT_EQ(count, rounds);
}

}  // namespace
}  // namespace ormel::detail
