#include "Support/ProcessResources.h"

#include <errno.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace ormel::testing {

namespace {

/// How many entries a directory of the system has; 0 where the system has no such directory.
std::size_t entries(const char* directory) {
  std::error_code absent;
  const std::filesystem::directory_iterator all(directory, absent);
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::size_t bytesInUse() {
  std::size_t pages = 0;
  std::size_t residentPages = 0;
  std::ifstream("/proc/self/statm") >> pages >> residentPages;
  return residentPages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace

ProcessResources ProcessResources::now() {
  ProcessResources resources;
  resources.descriptors = entries("/dev/fd");
  resources.threads = entries("/proc/self/task");
  resources.residentBytes = bytesInUse();
  siginfo_t info{};
  resources.hasChildren = ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
  return resources;
}

}  // namespace ormel::testing
