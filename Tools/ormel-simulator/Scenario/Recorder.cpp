#include "ormel-simulator/Scenario/Recorder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "OrmelSDK/Base/Error.h"
#include "OrmelSDK/Text/UTF8.h"

// NOLINTNEXTLINE(readability-redundant-declaration): not every system declares it in a header.
extern "C" char** environ;

namespace ormel::simulator {

namespace {

// Values of other variables may be secrets of the machine, so only their names are recorded.
bool valueIsRecorded(std::string_view name) {
  return name == "PATH" || name.starts_with("ORMEL_") || name.starts_with("KESTRION_");
}

// A record is kept and sent around, so of a key it tells only that the server got one.
JSONValue recordedValue(std::string_view name, std::string_view value) {
  if (name != "ORMEL_API_KEY") return JSONValue(value);
  return JSONValue(std::to_string(value.size()).append(" bytes"));
}

JSONValue texts(const std::vector<std::string>& values) {
  std::vector<JSONValue> elements(values.begin(), values.end());
  return JSONValue::array(elements);
}

void setEnvironment(JSONObjectBuilder& members) {
  JSONObjectBuilder values;
  std::vector<std::string> names;
  for (char** entry = environ; entry && *entry; ++entry) {
    const std::string_view text = *entry;
    const std::size_t equals = std::min(text.find('='), text.size());
    names.emplace_back(text.substr(0, equals));
    if (!valueIsRecorded(names.back())) continue;
    values.set(names.back(), recordedValue(names.back(), text.substr(std::min(equals + 1, text.size()))));
  }
  std::sort(names.begin(), names.end());
  members.set("environment", values.build()).set("environmentNames", texts(names));
}

std::string hexOf(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += digits[value >> 4];
    text += digits[value & 15];
  }
  return text;
}

}  // namespace

Recorder::Recorder(const std::string& path) : path_(path) {
  if (path.empty()) return;
  file_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (file_ < 0) throw Error("cannot open the record " + path + ": " + std::strerror(errno));
}

Recorder::~Recorder() {
  if (file_ >= 0) ::close(file_);
}

std::size_t Recorder::countStarts() const {
  std::ifstream file(path_, std::ios::binary);
  std::size_t count = 0;
  for (std::string line; std::getline(file, line);) {
    const JSONValue entry = JSONValue::decode(line);
    const JSONValue* event = entry.find("event");
    if (event && *event == JSONValue("start")) ++count;
  }
  return count;
}

void Recorder::recordStart(const std::vector<std::string>& arguments) {
  JSONObjectBuilder members;
  members.set("arguments", texts(arguments));
  setEnvironment(members);
  if (file_ < 0) return;
  // Two processes that start at once must not take the same number.
  ::flock(file_, LOCK_EX);
  run_ = countStarts() + 1;
  members.set("run", run_);
  record("start", members);
  ::flock(file_, LOCK_UN);
}

void Recorder::closeOtherDescriptors() const noexcept {
  constexpr int likelyLimit = 1024;
  for (int file = STDERR_FILENO + 1; file < likelyLimit; ++file) {
    if (file != file_) ::close(file);
  }
}

void Recorder::record(std::string_view event, JSONObjectBuilder members) {
  if (file_ < 0) return;
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_).count();
  members.set("event", event).set("order", ++order_).set("process", ::getpid()).set("milliseconds", elapsed);
  const std::string line = members.build().encode() + "\n";
  std::string_view rest = line;
  while (!rest.empty()) {
    const ssize_t written = ::write(file_, rest.data(), rest.size());
    if (written < 0 && errno != EINTR) throw Error("cannot write the record: " + std::string(std::strerror(errno)));
    if (written > 0) rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

void Recorder::recordReceived(std::string_view line, bool terminated) {
  if (file_ < 0) return;
  JSONObjectBuilder members;
  setBytes(members, "line", line);
  record("received", members.set("terminated", terminated));
}

void Recorder::recordSent(std::string_view stream, std::string_view bytes) {
  if (file_ < 0) return;
  constexpr std::size_t longestText = std::size_t{64} * 1024;
  JSONObjectBuilder members;
  members.set("stream", stream).set("bytes", bytes.size());
  if (bytes.size() <= longestText) setBytes(members, "text", bytes);
  record("sent", members);
}

void Recorder::setBytes(JSONObjectBuilder& members, std::string_view key, std::string_view bytes) {
  members.set(key, bytes);
  if (!isValidUTF8(bytes)) members.set(std::string(key) + "Hex", hexOf(bytes));
}

}  // namespace ormel::simulator
