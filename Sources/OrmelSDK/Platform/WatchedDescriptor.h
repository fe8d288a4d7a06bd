#pragma once

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>

#include "OrmelSDK/Platform/FileDescriptor.h"

namespace ormel::detail {

/// Hands a descriptor to an I/O context. Reads and writes on it return at once from then on.
/// Fails with `ProcessLaunchError` when the system has no room to watch one more.
asio::posix::stream_descriptor watchedDescriptor(asio::io_context& context, FileDescriptor descriptor);

}  // namespace ormel::detail
