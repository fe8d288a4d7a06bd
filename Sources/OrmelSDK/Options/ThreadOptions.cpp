#include "OrmelSDK/Options/ThreadOptions.h"

namespace ormel {

ThreadOptions::ThreadOptions() = default;
ThreadOptions::ThreadOptions(const ThreadOptions&) = default;
ThreadOptions::ThreadOptions(ThreadOptions&&) noexcept = default;
ThreadOptions& ThreadOptions::operator=(const ThreadOptions&) = default;
ThreadOptions& ThreadOptions::operator=(ThreadOptions&&) noexcept = default;
ThreadOptions::~ThreadOptions() = default;

}  // namespace ormel
