#include "Partner.h"

#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "Support/Frames.h"
#include "Workload.h"

namespace ormel::benchmarks {

testing::ChildOptions partnerOptions(const std::string& socketPath) {
  testing::ChildOptions options;
  options.environment = {"KESTRION_BROWSER_SOCKET=" + socketPath, "KESTRION_WORKSPACE_PATH=/workspace",
                         "KESTRION_BROWSER_TOKEN=00000000-0000-0000-0000-000000000000"};
  return options;
}

void writeBlocking(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count <= 0) throw std::runtime_error("cannot write");
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void readBlocking(int descriptor, char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t got = ::read(descriptor, bytes, count);
    if (got <= 0) throw std::runtime_error("cannot read");
    bytes += got;
    count -= static_cast<std::size_t>(got);
  }
}

bool readLength(int descriptor, std::size_t& length) {
  unsigned char field[4];
  if (::read(descriptor, field, 1) != 1) return false;
  readBlocking(descriptor, reinterpret_cast<char*>(field) + 1, sizeof field - 1);
  length = 0;
  for (std::size_t at = sizeof field; at > 0; --at) length = length << 8 | field[at - 1];
  return true;
}

Partner::Partner(const std::string& executable, std::string_view request, std::string_view result)
    : listener_(directory_.path() / "socket"),
      program_(executable, partnerOptions(listener_.path())),
      connection_(listener_.accept()),
      request_(request),
      result_(result),
      answer_(result.size() + 4096) {
  request_.push_back('\n');
  testing::setNonBlocking(program_.inputDescriptor(), false);
  testing::setNonBlocking(connection_.number(), false);
  host_ = std::thread([this] { serve(); });
}

Partner::~Partner() {
  program_.closeInput();
  host_.join();
}

void Partner::exchange() {
  writeBlocking(program_.inputDescriptor(), request_);
  std::size_t size = 0;
  do {
    if (size == answer_.size()) answer_.resize(answer_.size() * 2);
    const ssize_t got = ::read(program_.outputDescriptor(), answer_.data() + size, answer_.size() - size);
    if (got <= 0) throw std::runtime_error("the program under measurement has gone");
    size += static_cast<std::size_t>(got);
  } while (answer_[size - 1] != '\n');
  if (size < result_.size()) throw std::runtime_error("the answer is no result");
}

void Partner::serve() {
  std::vector<char> body;
  std::size_t length = 0;
  for (long id = 1; readLength(connection_.number(), length); ++id) {
    if (body.size() < length) body.resize(length);
    readBlocking(connection_.number(), body.data(), length);
    std::string reply = replyHead(id);
    reply.append(result_).push_back(replyTail);
    writeBlocking(connection_.number(), testing::frame(reply));
  }
}

}  // namespace ormel::benchmarks
