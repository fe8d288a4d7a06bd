#pragma once

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "ormel-simulator/Machine/Commands/CommandLaunch.h"

namespace ormel::simulator {

struct PseudoTerminal {
  /// The side of the one who types and reads the screen.
  detail::FileDescriptor screen;
  /// The side of the programs that run in it.
  detail::FileDescriptor programs;
};

/// Both sides are close-on-exec. Fails with `Error`.
PseudoTerminal makePseudoTerminal(const TerminalSize& size);

void resizeTerminal(const detail::FileDescriptor& screen, const TerminalSize& size) noexcept;

}  // namespace ormel::simulator
