#pragma once

namespace ormel::detail {

/// Enlarges a pipe's buffer where the platform can: each time a pipe runs full or empty costs a context switch between
/// the processes at its ends. Does nothing to a descriptor that is no pipe; a refusal by the system is ignored.
void growPipe(int descriptor) noexcept;

}  // namespace ormel::detail
