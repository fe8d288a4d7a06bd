#include "TessellaBrowserMCP/LineWriter.h"

#include <cerrno>
#include <cstddef>
#include <utility>

#include "OrmelSDK/JSON/CodingErrors.h"
#include "OrmelSDK/JSON/JSONEncoding.h"
#include "OrmelSDK/Platform/PipeCapacity.h"
#include "TessellaBrowserMCP/DescriptorIO.h"
#include "TessellaBrowserMCP/OutputError.h"

namespace ormel {

namespace {

// Small enough to be written from the processor's cache, and as large as the usual pipe.
constexpr std::size_t pieceSize = std::size_t{64} << 10;

}  // namespace

void LineWriter::write(const JSONValue& value) {
  piece_.clear();
  try {
    detail::encodeJSONInPieces(value, piece_, pieceSize, [this](detail::ByteBuffer& piece) {
      if (piece.size() >= pieceSize && !std::exchange(pipeGrown_, true)) detail::growPipe(descriptor_);
      writeBytes(piece.view());
      piece.clear();
    });
  } catch (const EncodingError&) {
    return;
  }
  writeBytes("\n");
}

void LineWriter::writeBytes(std::string_view bytes) {
  if (!detail::writeAllWaiting(descriptor_, bytes)) throw OutputError(errno);
}

}  // namespace ormel
