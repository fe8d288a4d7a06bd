// Compiles as it stands. With one of the macros below it has a fault that the compiler must refuse.

#include <iosfwd>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "OrmelSDK/Base/Visit.h"
#include "OrmelSDK/Coding/ParamsTable.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"

namespace ormel {

struct Nest {
  std::string tree;
  std::optional<std::string> note;
  bool isEmpty = true;
  std::vector<std::string> eggs;
  friend bool operator==(const Nest&, const Nest&);
  friend std::ostream& operator<<(std::ostream& stream, const Nest& value);
};

struct Sparrow {
  std::string name;
  friend bool operator==(const Sparrow&, const Sparrow&);
};

struct Robin {
  std::string name;
  friend bool operator==(const Robin&, const Robin&);
};

struct Bird {
  std::variant<Sparrow, Robin> value;
  friend bool operator==(const Bird&, const Bird&);
  friend std::ostream& operator<<(std::ostream& stream, const Bird& value);
};

struct CountParams {
  CountParams() {}

  std::string tree;
  std::optional<bool> everyDay;
  bool aloud = false;
};

struct WritesOnly {
  static JSONValue encode(const std::string& text) { return text; }
};

}  // namespace ormel

template <>
struct ormel::coding::RecordTable<ormel::Nest> {
  static constexpr Field fields[] = {
#ifdef OPTIONAL_AS_REQUIRED
      required<&Nest::note>("note"),
#elif defined(FIELD_OF_ANOTHER_RECORD)
      required<&Robin::name>("note"),
#elif defined(FIELD_TWICE)
      required<&Nest::tree>("note"),
#elif defined(OPTIONAL_OMITTED_WHEN_EMPTY)
      optional<&Nest::note>("note").omittedWhenEmpty(),
#else
      optional<&Nest::note>("note"),
#endif
#ifdef REQUIRED_AS_OPTIONAL
      optional<&Nest::tree>("tree"),
#elif defined(FIELD_ONLY_PRINTED)
      printed<&Nest::tree>("tree"),
#elif defined(CODER_CANNOT_READ)
      required<&Nest::tree>("tree").codedBy<WritesOnly>(),
#elif defined(FOUR_KEYS)
      required<&Nest::tree>("tree", "Tree", "TREE", "tReE"),
#elif defined(NULL_WHEN_NO_OPTIONAL)
      required<&Nest::tree>("tree").nullWhenAbsent(),
#else
      required<&Nest::tree>("tree"),
#endif
#ifdef BOOL_OMITTED_WHEN_EMPTY
      defaulted<&Nest::isEmpty>("isEmpty").omittedWhenEmpty(),
#else
      defaulted<&Nest::isEmpty>("isEmpty").onlyWhenTrue(),
#endif
#ifdef LIST_ONLY_WHEN_TRUE
      defaulted<&Nest::eggs>("eggs").onlyWhenTrue(),
#elif !defined(FIELD_MISSING)
      defaulted<&Nest::eggs>("eggs").omittedWhenEmpty(),
#endif
  };
};

template <>
struct ormel::coding::RecordTable<ormel::Sparrow> {
  static constexpr Field fields[] = {
      required<&Sparrow::name>("name"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::Robin> {
  static constexpr Field fields[] = {
      required<&Robin::name>("name"),
  };
};

template <>
struct ormel::coding::VariantTable<ormel::Bird> : CasesOf<Bird> {
  static constexpr Case cases[] = {
      variantCase<Sparrow>("sparrow"),
#ifdef CASE_OF_ANOTHER_VARIANT
      variantCase<Nest>("nest"),
#endif
#ifndef ALTERNATIVE_WITHOUT_CASE
      variantCase<Robin>("robin"),
#endif
  };
#ifndef UNKNOWN_NOT_READ
  static Bird decodeUnknown(std::string_view, const JSONValue&, const CodingPath&) { return {}; }
#endif
};

template <>
struct ormel::coding::ParamsTable<ormel::CountParams> {
  using P = CountParams;
  static constexpr Field fields[] = {
#ifdef OPTIONAL_ALWAYS_SENT
      always<&P::everyDay>("everyDay"),
#elif defined(OPTIONAL_SENT_IF_TRUE)
      ifTrue<&P::everyDay>("everyDay"),
#elif defined(OPTIONAL_AS_TRI_STATE)
      triState<&P::everyDay>("everyDay"),
#else
      ifGiven<&P::everyDay>("everyDay"),
#endif
      always<&P::tree>("tree"),
#ifndef CHOICE_MISSING
      ifTrue<&P::aloud>("aloud"),
#endif
  };
};

ORMEL_DEFINE_RECORD(Nest)
ORMEL_DEFINE_CASE(Sparrow)
ORMEL_DEFINE_CASE(Robin)
ORMEL_DEFINE_VARIANT(Bird)
ORMEL_DEFINE_PARAMS(CountParams)

namespace ormel {

std::string nameOf(const Bird& bird) {
  return visit(
      bird,
#ifndef CASE_NOT_VISITED
      [](const Robin& robin) { return robin.name; },
#endif
      [](const Sparrow& sparrow) { return sparrow.name; });
}

}  // namespace ormel
