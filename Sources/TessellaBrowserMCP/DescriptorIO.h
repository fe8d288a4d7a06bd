#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string_view>

namespace ormel::detail {

/// `read(2)`, retried when a signal interrupts it.
ssize_t readRetrying(int descriptor, char* bytes, std::size_t count) noexcept;

/// `write(2)`, retried when a signal interrupts it.
ssize_t writeRetrying(int descriptor, std::string_view bytes) noexcept;

/// Reads the available bytes, at least one, and waits for it even if the descriptor is in non-blocking mode. Returns 0
/// at the end of input, -1 with `errno` on failure.
ssize_t readWaiting(int descriptor, char* bytes, std::size_t count) noexcept;

/// Writes everything, and waits for room even if the descriptor is in non-blocking mode. Returns false with `errno` on
/// failure.
bool writeAllWaiting(int descriptor, std::string_view bytes) noexcept;

}  // namespace ormel::detail
