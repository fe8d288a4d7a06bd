#include "OrmelSDK/Coding/ParamsTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/Enumeration.h"

namespace ormel {

namespace {

enum class Direction { up, down };

struct Choice {
  std::string name;
  std::optional<std::string> details;
};

struct MoveParams {
  // Not an aggregate, as the choices of all calls.
  MoveParams() {}

  std::string id;
  std::optional<std::vector<std::string>> folders;
  bool force = false;
  std::optional<Direction> direction;
  Update<std::int64_t> limit;
  std::vector<Choice> choices;
};

struct PageParams {
  PageParams() {}

  std::optional<std::string> cursor;
  std::optional<std::int64_t> size;
};

/// A length in meters, which the other side wants in centimeters.
struct InCentimeters {
  static JSONValue encode(double meters) { return meters * 100; }
};

struct LengthParams {
  LengthParams() {}

  double length = 0;
  std::optional<double> width;
};

}  // namespace

}  // namespace ormel

template <>
struct ormel::coding::EnumerationTable<ormel::Direction> {
  static constexpr auto rule = closed;
  static constexpr Word<Direction> words[] = {
      {Direction::up, "go-up"},
      {Direction::down, "go-down"},
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::Choice> {
  static constexpr Field fields[] = {
      always<&Choice::name>("name"),
      nullWhenEmpty<&Choice::details>("details"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::MoveParams> {
  using P = MoveParams;
  static constexpr Field fields[] = {
      always<&P::id>("moveId"),     ifGiven<&P::folders>("folders"),
      ifTrue<&P::force>("force"),   nullWhenEmpty<&P::direction>("direction"),
      triState<&P::limit>("limit"), always<&P::choices>("choices"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::PageParams> {
  using P = PageParams;
  static constexpr bool absentWhenEmpty = true;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::size>("size"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::LengthParams> {
  using P = LengthParams;
  static constexpr Field fields[] = {
      always<&P::length>("length").codedBy<InCentimeters>(),
      ifGiven<&P::width>("width").codedBy<InCentimeters>(),
  };
};

ORMEL_DEFINE_WORDS(Direction)
ORMEL_DEFINE_WRITING(Direction, enumerationWord)
ORMEL_DEFINE_PARAMS(Choice)
ORMEL_DEFINE_PARAMS(MoveParams)
ORMEL_DEFINE_PARAMS(PageParams)
ORMEL_DEFINE_PARAMS(LengthParams)

namespace ormel {

namespace {

template <typename Params>
std::string sent(const Params& params) {
  const auto encoded = coding::encodeParams(params);
  return encoded ? encoded->encode() : "none";
}

TEST(ParamsTable, SendsEachKindOfChoiceByItsRule) {
  struct Row {
    std::function<void(MoveParams&)> choose;
    std::string expected;
  };
  const Row rows[] = {
      {[](MoveParams&) {}, R"({"moveId":"","direction":null,"choices":[]})"},
      {[](MoveParams& params) { params.id = "a"; }, R"({"moveId":"a","direction":null,"choices":[]})"},
      {[](MoveParams& params) { params.folders.emplace(); },
       R"({"moveId":"","folders":[],"direction":null,"choices":[]})"},
      {[](MoveParams& params) { params.folders = {"f", "g"}; },
       R"({"moveId":"","folders":["f","g"],"direction":null,"choices":[]})"},
      {[](MoveParams& params) { params.force = true; }, R"({"moveId":"","force":true,"direction":null,"choices":[]})"},
      {[](MoveParams& params) { params.direction = Direction::down; },
       R"({"moveId":"","direction":"go-down","choices":[]})"},
      {[](MoveParams& params) { params.limit = Update<std::int64_t>::value(0); },
       R"({"moveId":"","direction":null,"limit":0,"choices":[]})"},
      {[](MoveParams& params) { params.limit = Update<std::int64_t>::clear(); },
       R"({"moveId":"","direction":null,"limit":null,"choices":[]})"},
      {[](MoveParams& params) { params.limit = Update<std::int64_t>::unchanged(); },
       R"({"moveId":"","direction":null,"choices":[]})"},
      {[](MoveParams& params) { params.choices = {{"n", std::nullopt}, {"m", "d"}}; },
       R"({"moveId":"","direction":null,"choices":[{"name":"n","details":null},{"name":"m","details":"d"}]})"},
  };
  for (const Row& row : rows) {
    MoveParams params;
    row.choose(params);
    EXPECT_EQ(sent(params), row.expected);
  }
}

TEST(ParamsTable, TellsNoParamsFromAnEmptyObject) {
  EXPECT_EQ(sent(NoParams()), "none");
  EXPECT_EQ(sent(EmptyParams()), "{}");
  PageParams page;
  EXPECT_EQ(sent(page), "none");
  page.size = 0;
  EXPECT_EQ(sent(page), R"({"size":0})");
}

TEST(ParamsTable, LetsAFieldHaveAWriterOfItsOwn) {
  LengthParams params;
  params.length = 2;
  EXPECT_EQ(sent(params), R"({"length":200})");
  params.width = 0.5;
  EXPECT_EQ(sent(params), R"({"length":200,"width":50})");
}

TEST(Update, TellsAValueFromUnchangedAndFromClear) {
  const Update<std::string> value("v");
  EXPECT_EQ(value, Update<std::string>::value("v"));
  EXPECT_EQ(value.newValue(), "v");
  EXPECT_FALSE(value.isUnchanged() || value.isClear());
  const auto clear = Update<std::string>::clear();
  EXPECT_TRUE(clear.isClear());
  EXPECT_FALSE(clear.isUnchanged());
  EXPECT_EQ(clear.newValue(), std::nullopt);
  EXPECT_TRUE(Update<std::string>().isUnchanged());
  EXPECT_FALSE(Update<std::string>().isClear());
  EXPECT_EQ(Update<std::string>(), Update<std::string>::unchanged());
  EXPECT_NE(clear, Update<std::string>::unchanged());
  EXPECT_NE(clear, value);
}

}  // namespace

}  // namespace ormel
