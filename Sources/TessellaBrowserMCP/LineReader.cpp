#include "TessellaBrowserMCP/LineReader.h"

#include <utility>

#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/Platform/PipeCapacity.h"
#include "TessellaBrowserMCP/DescriptorIO.h"

namespace ormel {

namespace {

// The usual capacity of a pipe; more is read at once when the buffer has grown.
constexpr std::size_t blockSize = std::size_t{64} << 10;

// A buffer that a long line has grown beyond this is freed once the line is done. Few lines that can be forwarded need
// more.
constexpr std::size_t keptCapacity = std::size_t{16} << 20;

}  // namespace

std::optional<std::string_view> LineReader::next() {
  for (;;) {
    if (const auto line = takeLine()) return line;
    if (atEnd_) return takeRest();
    fill();
  }
}

std::optional<std::string_view> LineReader::takeLine() noexcept {
  const std::string_view bytes = buffer_.view();
  const std::size_t lineFeed = bytes.find('\n', scanned_);
  if (lineFeed == std::string_view::npos) {
    scanned_ = bytes.size();
    return std::nullopt;
  }
  std::string_view line = bytes.substr(start_, lineFeed - start_);
  if (line.ends_with('\r')) line.remove_suffix(1);
  start_ = scanned_ = lineFeed + 1;
  return line;
}

std::optional<std::string_view> LineReader::takeRest() noexcept {
  if (start_ == buffer_.size()) return std::nullopt;
  const std::string_view rest = buffer_.view().substr(start_);
  start_ = scanned_ = buffer_.size();
  return rest;
}

void LineReader::fill() {
  if (buffer_.size() - start_ >= blockSize && !std::exchange(pipeGrown_, true)) detail::growPipe(descriptor_);
  buffer_.removePrefix(start_);
  scanned_ -= start_;
  start_ = 0;
  if (buffer_.empty() && buffer_.capacity() > keptCapacity) buffer_ = detail::ByteBuffer();
  char* const room = buffer_.room(blockSize + detail::jsonPadding);
  const std::size_t free = buffer_.capacity() - buffer_.size() - detail::jsonPadding;
  const ssize_t count = detail::readWaiting(descriptor_, room, free);
  if (count <= 0) {
    atEnd_ = true;
  } else {
    buffer_.commit(static_cast<std::size_t>(count));
  }
}

}  // namespace ormel
