#pragma once

namespace ormel::detail {

/// Lets the process retain some tens of mebibytes of freed memory where the platform would return them: faulting the
/// pages in again takes longer than all the work on a message of some mebibytes. For programs; a library leaves such
/// choices to its application.
void keepFreedMemory() noexcept;

}  // namespace ormel::detail
