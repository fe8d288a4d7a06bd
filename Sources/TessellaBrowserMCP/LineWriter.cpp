#include "TessellaBrowserMCP/LineWriter.h"

#include <cerrno>
#include <string_view>

#include "OrmelSDK/ByteBuffer.h"
#include "OrmelSDK/CodingErrors.h"
#include "OrmelSDK/JSONEncoding.h"
#include "TessellaBrowserMCP/DescriptorIO.h"
#include "TessellaBrowserMCP/OutputError.h"

namespace ormel {

namespace {

void writeBytes(int descriptor, std::string_view bytes) {
  if (!detail::writeAllWaiting(descriptor, bytes)) throw OutputError(errno);
}

}  // namespace

void writeLine(int descriptor, JSONValue value) {
  detail::ByteBuffer text;
  try {
    detail::encodeJSON(value, text);
  } catch (const EncodingError&) {
    return;
  }
  value = nullptr;
  writeBytes(descriptor, text.view());
  writeBytes(descriptor, "\n");
}

}  // namespace ormel
