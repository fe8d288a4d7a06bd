#include "OrmelSDK/Base/UUID.h"

#include <uuid/uuid.h>

#include <ostream>

namespace ormel {

static_assert(sizeof(uuid_t) == sizeof(UUID::bytes));

UUID UUID::random() {
  UUID made;
  uuid_generate_random(made.bytes.data());
  return made;
}

std::string UUID::text() const {
  constexpr std::size_t textSize = 36;
  std::array<char, textSize + 1> text;
  uuid_unparse_upper(bytes.data(), text.data());
  return std::string(text.data(), textSize);
}

std::ostream& operator<<(std::ostream& stream, const UUID& value) { return stream << value.text(); }

}  // namespace ormel
