#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "OrmelSDK/Coding/Enumeration.h"
#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Coding/TaggedVariant.h"
#include "OrmelSDK/JSON/CodingErrors.h"

namespace ormel {

enum class SampleTone { low, high, unknown };

enum class SamplePace { slow, fast, unknown };

struct SampleSound {
  std::string name;
  std::optional<std::string> owner;
  std::optional<std::int64_t> remark;
  bool isLoud = false;
  std::vector<std::string> tags;
  std::vector<std::int64_t> counts;
  double length = 1;
  SampleTone tone = SampleTone::low;
  friend bool operator==(const SampleSound&, const SampleSound&);
};

/// Meters, which are centimeters on the wire.
struct Centimeters {
  static void decodeInto(double& into, const JSONValue& value, const coding::CodingPath& path) {
    coding::Codec<double>::decodeInto(into, value, path);
    into /= 100;
  }
  static JSONValue encode(double meters) { return meters * 100; }
};

struct SampleLocal {
  std::string path;
  friend bool operator==(const SampleLocal&, const SampleLocal&);
};

struct SampleAnywhere {
  friend bool operator==(const SampleAnywhere&, const SampleAnywhere&);
};

/// A case that says its own type when it is written.
struct SampleNamed {
  std::string name;
  friend bool operator==(const SampleNamed&, const SampleNamed&);
};

struct SampleOther {
  JSONValue payload;
  friend bool operator==(const SampleOther&, const SampleOther&) = default;
};

struct SampleOrigin {
  std::variant<SampleLocal, SampleAnywhere, SampleNamed, SampleOther> value;
  friend bool operator==(const SampleOrigin&, const SampleOrigin&) = default;
};

}  // namespace ormel

template <>
struct ormel::coding::EnumerationTable<ormel::SampleTone> {
  static constexpr auto rule = exactOr(SampleTone::unknown);
  static constexpr Word<SampleTone> words[] = {
      {SampleTone::low, "LOW"},
      {SampleTone::high, "HIGH"},
      {SampleTone::high, "SHRILL"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::SamplePace> {
  static constexpr auto rule = tolerant(SamplePace::unknown);
  static constexpr Word<SamplePace> words[] = {
      {SamplePace::slow, "very_slow"},
      {SamplePace::fast, "fast"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SampleSound> {
  static constexpr Field fields[] = {
      required<&SampleSound::name>("name", "title", "label"),
      optional<&SampleSound::owner>("owner", "Owner").writtenAs("Owner"),
      optional<&SampleSound::remark>("remark").nullWhenAbsent(),
      defaulted<&SampleSound::isLoud>("isLoud").onlyWhenTrue(),
      defaulted<&SampleSound::tags>("tags").omittedWhenEmpty(),
      defaulted<&SampleSound::counts>("counts").lossy(),
      defaulted<&SampleSound::length>("length").codedBy<Centimeters>(),
      defaulted<&SampleSound::tone>("tone"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SampleLocal> {
  static constexpr Field fields[] = {
      required<&SampleLocal::path>("path"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::SampleAnywhere> : NoFields {};

template <>
struct ormel::coding::RecordTable<ormel::SampleNamed> {
  static constexpr std::string_view writtenType = "NAMED";
  static constexpr Field fields[] = {
      required<&SampleNamed::name>("name"),
  };
  static void finish(SampleNamed& named, const JSONObject& object, const CodingPath&) {
    if (hasValue(object, "suffix")) named.name += *object.find("suffix")->stringValue();
  }
};

template <>
struct ormel::coding::VariantTable<ormel::SampleOrigin> : CasesOf<SampleOrigin> {
  static constexpr Case cases[] = {
      variantCase<SampleLocal>("local", "here"),
      variantCase<SampleAnywhere>("anywhere"),
      variantCase<SampleNamed>("named", "local"),
  };
  static SampleOrigin decodeUnknown(std::string_view, const JSONValue& value, const CodingPath& path) {
    return decodeUntyped(value, path);
  }
  static SampleOrigin decodeUntyped(const JSONValue& value, const CodingPath&) { return {SampleOther{value}}; }
  static JSONValue encodeUnknown(const SampleOrigin& origin) { return std::get<SampleOther>(origin.value).payload; }
};

ORMEL_DEFINE_WORDS(SampleTone)
ORMEL_DEFINE_READING(SampleTone, decodeEnumeration)
ORMEL_DEFINE_WRITING(SampleTone, enumerationWord)
ORMEL_DEFINE_WORDS(SamplePace)
ORMEL_DEFINE_READING(SamplePace, decodeEnumeration)
ORMEL_DEFINE_WRITING(SamplePace, enumerationWord)
ORMEL_DEFINE_CASE(SampleSound)
ORMEL_DEFINE_CASE(SampleLocal)
ORMEL_DEFINE_CASE(SampleAnywhere)
ORMEL_DEFINE_CASE(SampleNamed)
ORMEL_DEFINE_READING(SampleOrigin, decodeVariant)
ORMEL_DEFINE_WRITING(SampleOrigin, encodeVariant)

namespace ormel {

namespace {

using coding::Codec;
using coding::CodingPath;

/// Reads a record both ways that there are, in the loop and inlined, and expects the same of them.
SampleSound read(std::string_view text) {
  const JSONValue value = JSONValue::decode(text);
  const auto sound = coding::decodeAs<SampleSound>(value, CodingPath());
  SampleSound inlined;
  coding::decodeHotRecord(inlined, value, CodingPath());
  EXPECT_EQ(sound, inlined) << text;
  return sound;
}

std::string failure(std::string_view text) {
  const JSONValue value = JSONValue::decode(text);
  std::array<std::string, 2> failures;
  for (const bool isHot : {false, true}) {
    try {
      SampleSound sound;
      if (isHot) {
        coding::decodeHotRecord(sound, value, CodingPath());
      } else {
        Codec<SampleSound>::decodeInto(sound, value, CodingPath());
      }
    } catch (const DecodingError& error) {
      std::string& told = failures[isHot ? 1 : 0];
      for (const std::string& key : error.context().codingPath) told += key + ": ";
      told += error.context().debugDescription;
    }
  }
  EXPECT_EQ(failures[0], failures[1]) << text;
  return failures[0];
}

std::string written(const SampleSound& sound) { return Codec<SampleSound>::encode(sound).encode(); }

TEST(RecordTable, TriesKeysInTheirOrder) {
  EXPECT_EQ(read(R"({"name":"a","title":"b","label":"c"})").name, "a");
  EXPECT_EQ(read(R"({"label":"c","title":"b"})").name, "b");
  EXPECT_EQ(read(R"({"name":null,"title":null,"label":"c"})").name, "c");
  EXPECT_EQ(read(R"({"name":"a","Owner":"o"})").owner, "o");
  EXPECT_EQ(read(R"({"name":"a","owner":null,"Owner":"o"})").owner, "o");
  EXPECT_EQ(read(R"({"name":"a","owner":"p","Owner":"o"})").owner, "p");
}

TEST(RecordTable, NamesTheKeyThatFailed) {
  const std::pair<const char*, const char*> rows[] = {
      {R"({"name":1})", "name: Expected String but found a number."},
      {R"({"title":1})", "title: Expected String but found a number."},
      {R"({"name":null,"label":1})", "label: Expected String but found a number."},
      {R"({"name":"a","owner":1})", "owner: Expected String but found a number."},
      {R"({"name":"a","Owner":1})", "Owner: Expected String but found a number."},
      {R"({"name":"a","tags":["b",1]})", "tags: Index 1: Expected String but found a number."},
      {R"({"name":"a","length":"b"})", "length: Expected Double but found a string."},
      {R"({})", "No value is associated with the key 'label'."},
      {R"({"name":null})", "No value is associated with the key 'label'."},
      {R"({"name":null,"title":null,"label":null})", "label: Expected String but found null."},
      {R"([])", "Expected SampleSound but found an array."},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(failure(text), expected) << text;
}

TEST(RecordTable, GivesAbsentAndNullFieldsTheirInitialValues) {
  SampleSound initial;
  initial.name = "a";
  EXPECT_EQ(read(R"({"name":"a"})"), initial);
  EXPECT_EQ(read(R"({"name":"a","owner":null,"Owner":null,"remark":null,"isLoud":null,"tags":null,"counts":null,)"
                 R"("length":null,"tone":null})"),
            initial);
}

TEST(RecordTable, WritesEachFieldByItsRule) {
  SampleSound sound;
  sound.name = "a";
  EXPECT_EQ(written(sound), R"({"name":"a","remark":null,"counts":[],"length":100,"tone":"LOW"})");
  sound = {"a", "o", 7, true, {"t"}, {1, 2}, 0.5, SampleTone::high};
  EXPECT_EQ(written(sound), R"({"name":"a","Owner":"o","remark":7,"isLoud":true,"tags":["t"],"counts":[1,2],)"
                            R"("length":50,"tone":"HIGH"})");
  EXPECT_EQ(read(written(sound)), sound);
}

TEST(RecordTable, DropsTheElementsOfALossyListThatFail) {
  EXPECT_EQ(read(R"({"name":"a","counts":[1,"x",2,null,3]})").counts, (std::vector<std::int64_t>{1, 2, 3}));
  EXPECT_EQ(failure(R"({"name":"a","counts":{}})"), "counts: Expected Array but found an object.");
}

TEST(ExactWords, FallBackForAnyOtherText) {
  const std::pair<const char*, SampleTone> rows[] = {{"LOW", SampleTone::low},      {"HIGH", SampleTone::high},
                                                     {"SHRILL", SampleTone::high},  {"low", SampleTone::unknown},
                                                     {"L_OW", SampleTone::unknown}, {" LOW", SampleTone::unknown},
                                                     {"", SampleTone::unknown}};
  for (const auto& [word, expected] : rows) {
    EXPECT_EQ(coding::decodeAs<SampleTone>(JSONValue(word), CodingPath()), expected) << word;
  }
  EXPECT_THROW(coding::decodeAs<SampleTone>(JSONValue(1), CodingPath()), DecodingError);
}

TEST(TolerantWords, CompareCanonicalFormsAndFallBack) {
  const std::pair<const char*, SamplePace> rows[] = {{"very_slow", SamplePace::slow},    {"verySlow", SamplePace::slow},
                                                     {" VERY-SLOW\n", SamplePace::slow}, {"fast", SamplePace::fast},
                                                     {"very slow", SamplePace::unknown}, {"", SamplePace::unknown}};
  for (const auto& [word, expected] : rows) {
    EXPECT_EQ(coding::decodeAs<SamplePace>(JSONValue(word), CodingPath()), expected) << word;
  }
}

SampleOrigin origin(std::string_view text) {
  return coding::decodeAs<SampleOrigin>(JSONValue::decode(text), CodingPath());
}

TEST(VariantTable, ReadsACaseByItsWordAndAnythingElseAsUnknown) {
  EXPECT_EQ(origin(R"({"type":"local","path":"p"})"), SampleOrigin{SampleLocal{"p"}});
  EXPECT_EQ(origin(R"({"path":"p","type":"here"})"), SampleOrigin{SampleLocal{"p"}});
  EXPECT_EQ(origin(R"({"type":"anywhere"})"), SampleOrigin{SampleAnywhere()});
  EXPECT_EQ(origin(R"({"type":"named","name":"n","suffix":"s"})"), SampleOrigin{SampleNamed{"ns"}});
  for (const char* text : {R"({"type":"far","a":1})", R"({"a":1})", R"({"type":null})", R"({"type":7,"path":"p"})"}) {
    EXPECT_EQ(origin(text), SampleOrigin{SampleOther{JSONValue::decode(text)}}) << text;
  }
  EXPECT_THROW(origin("[]"), DecodingError);
  EXPECT_THROW(origin(R"({"type":"local"})"), DecodingError);
}

TEST(VariantTable, WritesTheFirstWordOrTheTypeThatTheRecordSays) {
  const std::pair<SampleOrigin, const char*> rows[] = {
      {SampleOrigin{SampleLocal{"p"}}, R"({"type":"local","path":"p"})"},
      {SampleOrigin{SampleAnywhere()}, R"({"type":"anywhere"})"},
      {SampleOrigin{SampleNamed{"n"}}, R"({"type":"NAMED","name":"n"})"},
      {SampleOrigin{SampleOther{JSONValue::decode(R"({"a":1})")}}, R"({"a":1})"},
  };
  for (const auto& [value, expected] : rows) EXPECT_EQ(Codec<SampleOrigin>::encode(value).encode(), expected);
  EXPECT_EQ(Codec<SampleNamed>::encode(SampleNamed{"n"}).encode(), R"({"type":"NAMED","name":"n"})");
}

}  // namespace

}  // namespace ormel
