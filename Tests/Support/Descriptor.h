#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Support/Eventually.h"

namespace ormel::testing {

/// Owns a descriptor; -1 is none.
class Descriptor {
 public:
  Descriptor() noexcept = default;
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { reset(); }

  int number() const noexcept { return number_; }
  void reset() noexcept;

 private:
  int number_ = -1;
};

struct Pipe {
  Descriptor readEnd;
  Descriptor writeEnd;
};

/// A pipe that child programs do not inherit.
Pipe makePipe();

/// A connected pair of Unix-domain sockets of a type such as `SOCK_STREAM` that child programs do not inherit.
std::pair<Descriptor, Descriptor> makeSocketPair(int type);

void setNonBlocking(int descriptor, bool nonBlocking);
void setCloseOnExec(int descriptor);

/// Whether something can be read now: bytes, an end, or a connection to accept.
bool isReadable(int descriptor);

// All of these fail with `std::runtime_error` when `patience` runs out and with `std::system_error` on an error.

/// Waits until something can be read.
void awaitReadable(int descriptor);

/// Appends what can be read, at most `limit` bytes, waiting for the first. False at the end.
bool readSome(int descriptor, std::string& bytes, std::size_t limit = std::size_t{256} << 10);

/// Reads `count` bytes. Fails at an earlier end.
std::string readExactly(int descriptor, std::size_t count);

std::string readToEnd(int descriptor);

/// Writes everything to a non-blocking descriptor.
void writeAll(int descriptor, std::string_view bytes);

}  // namespace ormel::testing
