#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ormel::simulator {

/// The number of a signal given as "TERM", "SIGTERM" or "15"; empty for what can end no process.
std::optional<int> signalNamed(std::string_view name);

/// "SIGTERM", or "signal 42" for one without a common name.
std::string signalName(int signal);

/// From now on the signal does nothing but be counted.
void ignoreAndCount(int signal);

/// How often the signal came since `ignoreAndCount`.
int signalArrivals(int signal) noexcept;

/// Gives the signals their default effect, whatever was inherited, save SIGPIPE, which a failing write reports.
void restoreSignals();

/// Ends this process by the signal, without leaving a core file. Returns only if the signal had no such effect.
void dieBySignal(int signal);

}  // namespace ormel::simulator
