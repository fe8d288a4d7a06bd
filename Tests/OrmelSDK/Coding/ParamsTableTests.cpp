#include "OrmelSDK/Coding/ParamsTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/Enumeration.h"

namespace ormel {

enum class SampleDirection { up, down };

struct SampleChoice {
  std::string name;
  std::optional<std::string> details;
};

struct SampleMoveParams {
  // Not an aggregate, as the choices of all calls.
  SampleMoveParams() {}

  std::string id;
  std::optional<std::vector<std::string>> folders;
  bool force = false;
  std::optional<SampleDirection> direction;
  Update<std::int64_t> limit;
  std::vector<SampleChoice> choices;
};

struct SamplePageParams {
  SamplePageParams() {}

  std::optional<std::string> cursor;
  std::optional<std::int64_t> size;
};

/// A length in meters, which the other side wants in centimeters.
struct InCentimeters {
  static JSONValue encode(double meters) { return meters * 100; }
};

struct SampleLengthParams {
  SampleLengthParams() {}

  double length = 0;
  std::optional<double> width;
};

}  // namespace ormel

template <>
struct ormel::coding::EnumerationTable<ormel::SampleDirection> {
  static constexpr auto rule = closed;
  static constexpr Word<SampleDirection> words[] = {
      {SampleDirection::up, "go-up"},
      {SampleDirection::down, "go-down"},
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::SampleChoice> {
  static constexpr Field fields[] = {
      always<&SampleChoice::name>("name"),
      nullWhenEmpty<&SampleChoice::details>("details"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::SampleMoveParams> {
  using P = SampleMoveParams;
  static constexpr Field fields[] = {
      always<&P::id>("moveId"),     ifGiven<&P::folders>("folders"),
      ifTrue<&P::force>("force"),   nullWhenEmpty<&P::direction>("direction"),
      triState<&P::limit>("limit"), always<&P::choices>("choices"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::SamplePageParams> {
  using P = SamplePageParams;
  static constexpr bool absentWhenEmpty = true;
  static constexpr Field fields[] = {
      ifGiven<&P::cursor>("cursor"),
      ifGiven<&P::size>("size"),
  };
};

template <>
struct ormel::coding::ParamsTable<ormel::SampleLengthParams> {
  using P = SampleLengthParams;
  static constexpr Field fields[] = {
      always<&P::length>("length").codedBy<InCentimeters>(),
      ifGiven<&P::width>("width").codedBy<InCentimeters>(),
  };
};

ORMEL_DEFINE_WORDS(SampleDirection)
ORMEL_DEFINE_WRITING(SampleDirection, enumerationWord)
ORMEL_DEFINE_PARAMS(SampleChoice)
ORMEL_DEFINE_PARAMS(SampleMoveParams)
ORMEL_DEFINE_PARAMS(SamplePageParams)
ORMEL_DEFINE_PARAMS(SampleLengthParams)

namespace ormel {

namespace {

template <typename Params>
std::string sent(const Params& params) {
  const auto encoded = coding::encodeParams(params);
  return encoded ? encoded->encode() : "none";
}

TEST(ParamsTable, SendsEachKindOfChoiceByItsRule) {
  struct Row {
    std::function<void(SampleMoveParams&)> choose;
    std::string expected;
  };
  const Row rows[] = {
      {[](SampleMoveParams&) {}, R"({"moveId":"","direction":null,"choices":[]})"},
      {[](SampleMoveParams& params) { params.id = "a"; }, R"({"moveId":"a","direction":null,"choices":[]})"},
      {[](SampleMoveParams& params) { params.folders.emplace(); },
       R"({"moveId":"","folders":[],"direction":null,"choices":[]})"},
      {[](SampleMoveParams& params) { params.folders = {"f", "g"}; },
       R"({"moveId":"","folders":["f","g"],"direction":null,"choices":[]})"},
      {[](SampleMoveParams& params) { params.force = true; },
       R"({"moveId":"","force":true,"direction":null,"choices":[]})"},
      {[](SampleMoveParams& params) { params.direction = SampleDirection::down; },
       R"({"moveId":"","direction":"go-down","choices":[]})"},
      {[](SampleMoveParams& params) { params.limit = Update<std::int64_t>::value(0); },
       R"({"moveId":"","direction":null,"limit":0,"choices":[]})"},
      {[](SampleMoveParams& params) { params.limit = Update<std::int64_t>::clear(); },
       R"({"moveId":"","direction":null,"limit":null,"choices":[]})"},
      {[](SampleMoveParams& params) { params.limit = Update<std::int64_t>::unchanged(); },
       R"({"moveId":"","direction":null,"choices":[]})"},
      {[](SampleMoveParams& params) { params.choices = {{"n", std::nullopt}, {"m", "d"}}; },
       R"({"moveId":"","direction":null,"choices":[{"name":"n","details":null},{"name":"m","details":"d"}]})"},
  };
  for (const Row& row : rows) {
    SampleMoveParams params;
    row.choose(params);
    EXPECT_EQ(sent(params), row.expected);
  }
}

TEST(ParamsTable, TellsNoParamsFromAnEmptyObject) {
  EXPECT_EQ(sent(NoParams()), "none");
  EXPECT_EQ(sent(EmptyParams()), "{}");
  SamplePageParams page;
  EXPECT_EQ(sent(page), "none");
  page.size = 0;
  EXPECT_EQ(sent(page), R"({"size":0})");
}

TEST(ParamsTable, LetsAFieldHaveAWriterOfItsOwn) {
  SampleLengthParams params;
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
