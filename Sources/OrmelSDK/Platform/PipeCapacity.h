#pragma once

namespace ormel::detail {

/// Lets a pipe hold more, where the platform can: each time a pipe is full or empty costs a switch between the
/// processes at its ends. Does nothing to a descriptor that is no pipe, and may be refused without harm.
void growPipe(int descriptor) noexcept;

}  // namespace ormel::detail
