#pragma once

#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

namespace ormel::benchmarks::yardstick {

using Json = nlohmann::json;

/// The two spellings of a record's `type`, often the same.
struct TypeWords {
  std::string_view first;
  std::string_view second = first;
};

/// One of some records, told apart by `type`, in the way of a user of nlohmann's library.
template <const auto& types, typename... Records>
struct OneOf {
  static_assert(sizeof...(Records) == std::size(types));

  std::variant<Records...> value;

  friend void from_json(const Json& json, OneOf& into) {
    static constexpr void (*readers[])(const Json&, OneOf&) = {readAs<Records>...};
    const std::string_view type = json.at("type").get_ref<const std::string&>();
    for (std::size_t index = 0; index < std::size(readers); ++index) {
      if (type == types[index].first || type == types[index].second) return readers[index](json, into);
    }
    throw std::invalid_argument(std::string(type));
  }

  friend void to_json(Json& json, const OneOf& from) {
    std::visit([&](const auto& record) { json = record; }, from.value);
  }

 private:
  template <typename Record>
  static void readAs(const Json& json, OneOf& into) {
    json.get_to(into.value.template emplace<Record>());
  }
};

}  // namespace ormel::benchmarks::yardstick
