#include "OrmelSDK/AppServerRun/Framing/AppServerJSONLineBuffer.h"

#include <utility>

namespace ormel::detail {

std::optional<std::string_view> AppServerJSONLineBuffer::finish() {
  if (isCopyInUse_) dropCopy();
  const std::string_view tail = withoutCarriageReturn(buffered({}));
  if (tail.empty()) return std::nullopt;
  return isValidUTF8(tail) ? tail : repaired(tail);
}

std::string_view AppServerJSONLineBuffer::checkedLine(std::string_view line, std::size_t left) {
  const bool beginsInBuffer = !buffer_.empty();
  const bool isKnownValid = !beginsInBuffer && areWholeLinesValid({line.data(), left});
  if (beginsInBuffer || left - line.size() < jsonPadding) line = buffered(line);
  line = withoutCarriageReturn(line);
  return isKnownValid || isValidUTF8(line) ? line : repaired(line);
}

// One check for all whole lines of the bytes: it costs less than one for each.
bool AppServerJSONLineBuffer::areWholeLinesValid(std::string_view rest) {
  if (areWholeLinesValid_ == Validity::unknown) {
    const bool isValid = isValidUTF8(rest.substr(0, rest.rfind('\n') + 1));
    areWholeLinesValid_ = isValid ? Validity::valid : Validity::invalid;
  }
  return areWholeLinesValid_ == Validity::valid;
}

std::string_view AppServerJSONLineBuffer::buffered(std::string_view endOfLine) {
  isCopyInUse_ = true;
  buffer_.append(endOfLine);
  buffer_.room(jsonPadding);
  return buffer_.view();
}

std::string_view AppServerJSONLineBuffer::repaired(std::string_view line) {
  isCopyInUse_ = true;
  repaired_ = repairedUTF8(line);
  const std::size_t size = repaired_.size();
  repaired_.append(jsonPadding, ' ');
  return std::string_view(repaired_).substr(0, size);
}

void AppServerJSONLineBuffer::dropCopy() {
  isCopyInUse_ = false;
  if (repaired_.capacity() > keptCapacity) repaired_ = std::string();
  if (buffer_.capacity() > keptCapacity) {
    const ByteBuffer released = std::move(buffer_);
  } else {
    buffer_.clear();
  }
}

}  // namespace ormel::detail
