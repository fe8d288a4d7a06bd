#include "TessellaBrowserMCP/LineWriter.h"

#include <cerrno>
#include <cstddef>
#include <utility>

#include "OrmelSDK/ByteBuffer.h"
#include "OrmelSDK/CodingErrors.h"
#include "OrmelSDK/JSONEncoding.h"
#include "OrmelSDK/Platform/PipeCapacity.h"
#include "TessellaBrowserMCP/DescriptorIO.h"
#include "TessellaBrowserMCP/OutputError.h"

namespace ormel {

namespace {

// The usual capacity of a pipe.
constexpr std::size_t longLine = std::size_t{64} << 10;

}  // namespace

void LineWriter::write(JSONValue value) {
  detail::ByteBuffer text;
  try {
    detail::encodeJSON(value, text);
  } catch (const EncodingError&) {
    return;
  }
  value = nullptr;
  if (text.size() > longLine && !std::exchange(pipeGrown_, true)) detail::growPipe(descriptor_);
  writeBytes(text.view());
  writeBytes("\n");
}

void LineWriter::writeBytes(std::string_view bytes) {
  if (!detail::writeAllWaiting(descriptor_, bytes)) throw OutputError(errno);
}

}  // namespace ormel
