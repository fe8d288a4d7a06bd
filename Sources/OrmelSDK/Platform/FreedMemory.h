#pragma once

namespace ormel::detail {

/// Lets the process keep some tens of mebibytes that it has freed, where the platform would give them back: getting
/// them page by page again takes longer than all the work on a message of some mebibytes. For programs; a library
/// leaves such choices to its application.
void keepFreedMemory() noexcept;

}  // namespace ormel::detail
