#include "OrmelSDK/Platform/HostProcess.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#if defined(__APPLE__)
#include <crt_externs.h>
#include <mach-o/dyld.h>
#endif

namespace ormel::detail {

HostPlatform hostPlatform() noexcept {
#if defined(__linux__) && defined(__aarch64__)
  return HostPlatform::linuxArm64;
#elif defined(__linux__) && defined(__x86_64__)
  return HostPlatform::linuxX64;
#elif defined(__APPLE__) && defined(__aarch64__)
  return HostPlatform::macOSArm64;
#else
#error "The names of the server's packages for this platform are not known: add them to HostPlatform."
#endif
}

const char* const* environmentBlock() noexcept {
#if defined(__APPLE__)
  // A library has no access to `environ` there.
  return *_NSGetEnviron();
#else
  return environ;
#endif
}

std::optional<std::string> environmentVariable(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  return value ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> executablePathOfThisProcess() {
  std::error_code failure;
#if defined(__APPLE__)
  std::uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);
  std::string told(size, '\0');
  if (_NSGetExecutablePath(told.data(), &size) != 0) return std::nullopt;
  const auto path = std::filesystem::canonical(told.c_str(), failure);
#else
  const auto path = std::filesystem::read_symlink("/proc/self/exe", failure);
#endif
  return failure ? std::nullopt : std::optional(path.string());
}

std::optional<std::string> homeDirectory() {
  if (const auto told = environmentVariable("HOME"); told && !told->empty()) return told;
  constexpr std::size_t textRoom = 16384;
  std::vector<char> texts(textRoom);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found) != 0 || !found) return std::nullopt;
  return std::string(entry.pw_dir);
}

}  // namespace ormel::detail
