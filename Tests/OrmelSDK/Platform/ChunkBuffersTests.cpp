#include "OrmelSDK/Platform/ChunkBuffers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

/// Fills an empty pool with this many recycled buffers and returns their addresses.
std::set<const char*> placesGivenBack(std::size_t count) {
  std::vector<ByteBuffer> buffers(count);
  std::set<const char*> places;
  for (ByteBuffer& buffer : buffers) places.insert((buffer = takeChunkBuffer()).data());
  for (ByteBuffer& buffer : buffers) giveBackChunkBuffer(std::move(buffer));
  return places;
}

/// Counts how many of these addresses come back, when only the pool can supply them.
std::size_t placesThatComeBack(const std::set<const char*>& places) {
  std::vector<ByteBuffer> taken(places.size());
  // The allocator reuses freed addresses first, so drain it: only recycled buffers then have these addresses.
  std::vector<ByteBuffer> fresh(places.size());
  for (ByteBuffer& buffer : fresh) buffer.room(largestChunk);
  std::size_t count = 0;
  for (ByteBuffer& buffer : taken) count += places.count((buffer = takeChunkBuffer()).data());
  return count;
}

TEST(ChunkBuffers, AreUsedAgain) { EXPECT_EQ(placesThatComeBack(placesGivenBack(3)), 3U); }

TEST(ChunkBuffers, AreFreedBeyondAFew) { EXPECT_EQ(placesThatComeBack(placesGivenBack(100)), 8U); }

TEST(ChunkBuffers, AreNotKeptIfTheyHaveGrown) {
  ByteBuffer grown = takeChunkBuffer();
  grown.append(std::string(largestChunk + 1, 'x'));
  giveBackChunkBuffer(std::move(grown));
  EXPECT_EQ(takeChunkBuffer().capacity(), largestChunk);
}

TEST(ChunkBuffers, AreNotKeptIfTheyNeverHadRoom) {
  const auto places = placesGivenBack(1);
  giveBackChunkBuffer(ByteBuffer());
  EXPECT_EQ(placesThatComeBack(places), 1U);
}

/// Fills a buffer and checks that no other thread has written to it.
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
