#pragma once

#include <simdjson.h>

#include <cstddef>

namespace ormel::benchmarks {

/// Looks at every key and value of a document once; returns the number of bytes and scalars that it saw.
inline std::size_t walk(const simdjson::dom::element& element) {
  switch (element.type()) {
    case simdjson::dom::element_type::STRING:
      return element.get_string().value_unsafe().size();
    case simdjson::dom::element_type::ARRAY: {
      std::size_t sum = 0;
      const simdjson::dom::array array = element.get_array().value_unsafe();
      for (const auto child : array) sum += walk(child);
      return sum;
    }
    case simdjson::dom::element_type::OBJECT: {
      std::size_t sum = 0;
      const simdjson::dom::object object = element.get_object().value_unsafe();
      for (const auto field : object) sum += field.key.size() + walk(field.value);
      return sum;
    }
    default:
      return 1;
  }
}

}  // namespace ormel::benchmarks
