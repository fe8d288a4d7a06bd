#include "OrmelSDK/Platform/ExecutableExamination.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "OrmelSDK/Platform/FileTests.h"
#include "OrmelSDK/Platform/HostProcess.h"

namespace ormel::detail {

namespace {

constexpr std::size_t examinedBytes = 4096;

std::string innermostFolder(const std::string& path) {
  std::error_code failure;
  auto folder = std::filesystem::absolute(path, failure).parent_path();
  while (!folder.empty() && folder != folder.root_path() && !isDirectory(folder.string())) {
    folder = folder.parent_path();
  }
  return folder.string();
}

std::string firstBytesOf(const std::string& path) {
  std::string bytes(examinedBytes, '\0');
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  const auto read = file.isOpen() ? ::pread(file.number(), bytes.data(), bytes.size(), 0) : 0;
  bytes.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
  return bytes;
}

/// The header of an ELF file.
class ELFHeader {
 public:
  explicit ELFHeader(std::string_view bytes)
      : bytes_(bytes),
        is64Bit_(bytes.size() > 4 && bytes[4] == '\x02'),
        isBigEndian_(bytes.size() > 5 && bytes[5] == '\x02') {}

  bool isBigEndian() const noexcept { return isBigEndian_; }
  /// 0 for a header that is cut off.
  std::uint64_t machine() const noexcept { return number(18, 2); }

  /// The program that loads this one; empty if it needs none.
  std::string_view interpreter() const noexcept {
    constexpr std::uint64_t interpreterType = 3;
    const std::uint64_t table = is64Bit_ ? number(32, 8) : number(28, 4);
    const std::uint64_t entrySize = number(is64Bit_ ? 54 : 42, 2);
    const std::uint64_t entries = number(is64Bit_ ? 56 : 44, 2);
    if (table > bytes_.size()) return {};
    for (std::uint64_t index = 0; index < entries; ++index) {
      const std::uint64_t entry = table + index * entrySize;
      if (number(entry, 4) == interpreterType) {
        return textAt(is64Bit_ ? number(entry + 8, 8) : number(entry + 4, 4));
      }
    }
    return {};
  }

 private:
  /// 0 for one that lies beyond the bytes.
  std::uint64_t number(std::uint64_t offset, std::size_t size) const noexcept {
    if (offset > bytes_.size() || bytes_.size() - offset < size) return 0;
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < size; ++index) {
      const std::size_t place = offset + (isBigEndian_ ? index : size - 1 - index);
      value = value << 8 | static_cast<unsigned char>(bytes_[place]);
    }
    return value;
  }

  std::string_view textAt(std::uint64_t offset) const noexcept {
    if (offset >= bytes_.size()) return {};
    const std::string_view rest = bytes_.substr(offset);
    const std::size_t end = rest.find('\0');
    return end == rest.npos ? std::string_view() : rest.substr(0, end);
  }

  std::string_view bytes_;
  bool is64Bit_;
  bool isBigEndian_;
};

constexpr std::uint64_t machineI386 = 3;
constexpr std::uint64_t machineARM = 40;
constexpr std::uint64_t machineX64 = 62;
constexpr std::uint64_t machineARM64 = 183;

std::string machineName(std::uint64_t machine) {
  constexpr std::array<std::pair<std::uint64_t, std::string_view>, 9> names = {{{machineI386, "i386"},
                                                                                {8, "MIPS"},
                                                                                {21, "ppc64"},
                                                                                {22, "s390x"},
                                                                                {machineARM, "arm"},
                                                                                {machineX64, "x86_64"},
                                                                                {machineARM64, "aarch64"},
                                                                                {243, "RISC-V"},
                                                                                {258, "LoongArch"}}};
  for (const auto& [number, name] : names) {
    if (number == machine) return "Linux on " + std::string(name);
  }
  return machine == 0 ? "no machine, its header being cut off" : "a machine of the number " + std::to_string(machine);
}

bool runsHere(const ELFHeader& header) {
  if (header.isBigEndian()) return false;
  switch (hostPlatform()) {
    case HostPlatform::linuxX64:
      return header.machine() == machineX64 || header.machine() == machineI386;
    case HostPlatform::linuxArm64:
      return header.machine() == machineARM64 || header.machine() == machineARM;
    case HostPlatform::macOSArm64:
      break;
  }
  return false;
}

/// The other system that a file is for, by the first bytes of its programs; empty for none.
std::string_view otherSystem(std::string_view bytes) {
  if (bytes.starts_with("MZ")) return "Windows";
  if (hostPlatform() == HostPlatform::macOSArm64) return {};
  constexpr std::array<std::string_view, 3> macOSMagic = {"\xcf\xfa\xed\xfe", "\xce\xfa\xed\xfe", "\xca\xfe\xba\xbe"};
  const bool isForMacOS =
      std::ranges::any_of(macOSMagic, [&](std::string_view magic) { return bytes.starts_with(magic); });
  return isForMacOS ? "macOS" : "";
}

/// Takes the next word off the line of a script's interpreter.
std::string_view takeWord(std::string_view& line) {
  constexpr std::string_view blanks = " \t";
  line.remove_prefix(std::min(line.size(), line.find_first_not_of(blanks)));
  const std::string_view word = line.substr(0, line.find_first_of(blanks));
  line.remove_prefix(word.size());
  return word;
}

bool isFoundIn(std::string_view searchPath, std::string_view name) {
  while (!searchPath.empty()) {
    const std::string_view directory = searchPath.substr(0, searchPath.find(':'));
    searchPath.remove_prefix(std::min(searchPath.size(), directory.size() + 1));
    if (isExecutableFile((directory.empty() ? "." : std::string(directory)) + "/" + std::string(name))) return true;
  }
  return false;
}

/// The interpreter that the script needs and that is not there; empty if all is well.
std::string missingInterpreter(std::string_view bytes, std::string_view searchPath) {
  std::string_view line = bytes.substr(2, bytes.find('\n') - 2);
  const std::string_view interpreter = takeWord(line);
  if (!isExecutableFile(std::string(interpreter))) return std::string(interpreter);
  if (!interpreter.ends_with("/env")) return {};
  std::string_view program = takeWord(line);
  while (program.starts_with('-') || program.find('=') != program.npos) program = takeWord(line);
  if (program.empty()) return {};
  const bool isThere =
      program.find('/') == program.npos ? isFoundIn(searchPath, program) : isExecutableFile(std::string(program));
  return isThere ? std::string() : std::string(program);
}

void examineContents(ExecutableFinding& finding, std::string_view searchPath) {
  const std::string bytes = firstBytesOf(finding.path);
  if (bytes.starts_with("#!")) {
    finding.detail = missingInterpreter(bytes, searchPath);
    if (!finding.detail.empty()) finding.verdict = ExecutableVerdict::badInterpreter;
  } else if (bytes.starts_with("\x7f"
                               "ELF")) {
    const ELFHeader header(bytes);
    if (!runsHere(header)) {
      finding.verdict = ExecutableVerdict::wrongArchitecture;
      finding.detail = machineName(header.machine());
    } else if (const std::string loader(header.interpreter()); !loader.empty() && !isExecutableFile(loader)) {
      finding.verdict = ExecutableVerdict::badInterpreter;
      finding.detail = loader;
    }
  } else if (const auto system = otherSystem(bytes); !system.empty()) {
    finding.verdict = ExecutableVerdict::wrongArchitecture;
    finding.detail = system;
  }
}

ExecutableFinding absentOrHidden(ExecutableFinding finding, int errorNumber) {
  finding.errorNumber = errorNumber;
  const bool isAbsent = errorNumber == ENOENT || errorNumber == ENOTDIR;
  finding.verdict = isAbsent ? ExecutableVerdict::noSuchFile : ExecutableVerdict::unreadable;
  if (isAbsent) finding.detail = innermostFolder(finding.path);
  return finding;
}

}  // namespace

ExecutableFinding examineExecutable(const std::string& path, std::string_view searchPath) {
  ExecutableFinding finding;
  finding.path = path;
  if (path.find('\0') != path.npos) {
    finding.verdict = ExecutableVerdict::noSuchFile;
    return finding;
  }
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) return absentOrHidden(std::move(finding), errno);
  if (S_ISDIR(status.st_mode)) {
    finding.verdict = ExecutableVerdict::directory;
  } else if (!S_ISREG(status.st_mode)) {
    finding.verdict = ExecutableVerdict::notAFile;
  } else if (::access(path.c_str(), X_OK) != 0) {
    finding.verdict = ExecutableVerdict::notExecutable;
    finding.errorNumber = errno;
  } else {
    examineContents(finding, searchPath);
  }
  return finding;
}

}  // namespace ormel::detail
