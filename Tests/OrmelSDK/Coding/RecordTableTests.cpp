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

namespace {

enum class Tone { low, high, unknown };

enum class Pace { slow, fast, unknown };

struct Sound {
  std::string name;
  std::optional<std::string> owner;
  std::optional<std::int64_t> remark;
  bool isLoud = false;
  std::vector<std::string> tags;
  std::vector<std::int64_t> counts;
  double length = 1;
  Tone tone = Tone::low;
  friend bool operator==(const Sound&, const Sound&) = default;
};

/// Meters, which are centimeters on the wire.
struct Centimeters {
  static void decodeInto(double& into, const JSONValue& value, const coding::CodingPath& path) {
    coding::Codec<double>::decodeInto(into, value, path);
    into /= 100;
  }
  static JSONValue encode(double meters) { return meters * 100; }
};

struct Local {
  std::string path;
  friend bool operator==(const Local&, const Local&) = default;
};

struct Anywhere {
  friend bool operator==(const Anywhere&, const Anywhere&) = default;
};

/// A case that says its own type when it is written.
struct Named {
  std::string name;
  friend bool operator==(const Named&, const Named&) = default;
};

struct Other {
  JSONValue payload;
  friend bool operator==(const Other&, const Other&) = default;
};

struct Origin {
  std::variant<Local, Anywhere, Named, Other> value;
  friend bool operator==(const Origin&, const Origin&) = default;
};

}  // namespace

}  // namespace ormel

template <>
struct ormel::coding::EnumerationTable<ormel::Tone> {
  static constexpr auto rule = exactOr(Tone::unknown);
  static constexpr Word<Tone> words[] = {
      {Tone::low, "LOW"},
      {Tone::high, "HIGH"},
      {Tone::high, "SHRILL"},
  };
};

template <>
struct ormel::coding::EnumerationTable<ormel::Pace> {
  static constexpr auto rule = tolerant(Pace::unknown);
  static constexpr Word<Pace> words[] = {
      {Pace::slow, "very_slow"},
      {Pace::fast, "fast"},
  };
};

template <>
struct ormel::coding::RecordTable<ormel::Sound> {
  static constexpr Field fields[] = {
      required<&Sound::name>("name", "title", "label"),
      optional<&Sound::owner>("owner", "Owner").writtenAs("Owner"),
      optional<&Sound::remark>("remark").nullWhenAbsent(),
      defaulted<&Sound::isLoud>("isLoud").onlyWhenTrue(),
      defaulted<&Sound::tags>("tags").omittedWhenEmpty(),
      defaulted<&Sound::counts>("counts").lossy(),
      defaulted<&Sound::length>("length").codedBy<Centimeters>(),
      defaulted<&Sound::tone>("tone"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::Local> {
  static constexpr Field fields[] = {
      required<&Local::path>("path"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::Anywhere> : NoFields {};

template <>
struct ormel::coding::RecordTable<ormel::Named> {
  static constexpr std::string_view writtenType = "NAMED";
  static constexpr Field fields[] = {
      required<&Named::name>("name"),
  };
  static void finish(Named& named, const JSONObject& object, const CodingPath&) {
    if (hasValue(object, "suffix")) named.name += *object.find("suffix")->stringValue();
  }
};

template <>
struct ormel::coding::VariantTable<ormel::Origin> : CasesOf<Origin> {
  static constexpr Case cases[] = {
      variantCase<Local>("local", "here"),
      variantCase<Anywhere>("anywhere"),
      variantCase<Named>("named", "local"),
  };
  static Origin decodeUnknown(std::string_view, const JSONValue& value, const CodingPath& path) {
    return decodeUntyped(value, path);
  }
  static Origin decodeUntyped(const JSONValue& value, const CodingPath&) { return {Other{value}}; }
  static JSONValue encodeUnknown(const Origin& origin) { return std::get<Other>(origin.value).payload; }
};

ORMEL_DEFINE_WORDS(Tone)
ORMEL_DEFINE_READING(Tone, decodeEnumeration)
ORMEL_DEFINE_WRITING(Tone, enumerationWord)
ORMEL_DEFINE_WORDS(Pace)
ORMEL_DEFINE_READING(Pace, decodeEnumeration)
ORMEL_DEFINE_WRITING(Pace, enumerationWord)
ORMEL_DEFINE_CASE(Sound)
ORMEL_DEFINE_CASE(Local)
ORMEL_DEFINE_CASE(Anywhere)
ORMEL_DEFINE_CASE(Named)
ORMEL_DEFINE_READING(Origin, decodeVariant)
ORMEL_DEFINE_WRITING(Origin, encodeVariant)

namespace ormel {

namespace {

using coding::Codec;
using coding::CodingPath;

/// Reads a record both ways that there are, in the loop and inlined, and expects the same of them.
Sound read(std::string_view text) {
  const JSONValue value = JSONValue::decode(text);
  const auto sound = coding::decodeAs<Sound>(value, CodingPath());
  Sound inlined;
  coding::decodeHotRecord(inlined, value, CodingPath());
  EXPECT_EQ(sound, inlined) << text;
  return sound;
}

std::string failure(std::string_view text) {
  const JSONValue value = JSONValue::decode(text);
  std::array<std::string, 2> failures;
  for (const bool isHot : {false, true}) {
    try {
      Sound sound;
      if (isHot) {
        coding::decodeHotRecord(sound, value, CodingPath());
      } else {
        Codec<Sound>::decodeInto(sound, value, CodingPath());
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

std::string written(const Sound& sound) { return Codec<Sound>::encode(sound).encode(); }

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
      {R"([])", "Expected Sound but found an array."},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(failure(text), expected) << text;
}

TEST(RecordTable, GivesAbsentAndNullFieldsTheirInitialValues) {
  Sound initial;
  initial.name = "a";
  EXPECT_EQ(read(R"({"name":"a"})"), initial);
  EXPECT_EQ(read(R"({"name":"a","owner":null,"Owner":null,"remark":null,"isLoud":null,"tags":null,"counts":null,)"
                 R"("length":null,"tone":null})"),
            initial);
}

TEST(RecordTable, WritesEachFieldByItsRule) {
  Sound sound;
  sound.name = "a";
  EXPECT_EQ(written(sound), R"({"name":"a","remark":null,"counts":[],"length":100,"tone":"LOW"})");
  sound = {"a", "o", 7, true, {"t"}, {1, 2}, 0.5, Tone::high};
  EXPECT_EQ(written(sound), R"({"name":"a","Owner":"o","remark":7,"isLoud":true,"tags":["t"],"counts":[1,2],)"
                            R"("length":50,"tone":"HIGH"})");
  EXPECT_EQ(read(written(sound)), sound);
}

TEST(RecordTable, DropsTheElementsOfALossyListThatFail) {
  EXPECT_EQ(read(R"({"name":"a","counts":[1,"x",2,null,3]})").counts, (std::vector<std::int64_t>{1, 2, 3}));
  EXPECT_EQ(failure(R"({"name":"a","counts":{}})"), "counts: Expected Array but found an object.");
}

TEST(ExactWords, FallBackForAnyOtherText) {
  const std::pair<const char*, Tone> rows[] = {{"LOW", Tone::low},     {"HIGH", Tone::high},    {"SHRILL", Tone::high},
                                               {"low", Tone::unknown}, {"L_OW", Tone::unknown}, {" LOW", Tone::unknown},
                                               {"", Tone::unknown}};
  for (const auto& [word, expected] : rows) {
    EXPECT_EQ(coding::decodeAs<Tone>(JSONValue(word), CodingPath()), expected) << word;
  }
  EXPECT_THROW(coding::decodeAs<Tone>(JSONValue(1), CodingPath()), DecodingError);
}

TEST(TolerantWords, CompareCanonicalFormsAndFallBack) {
  const std::pair<const char*, Pace> rows[] = {{"very_slow", Pace::slow},    {"verySlow", Pace::slow},
                                               {" VERY-SLOW\n", Pace::slow}, {"fast", Pace::fast},
                                               {"very slow", Pace::unknown}, {"", Pace::unknown}};
  for (const auto& [word, expected] : rows) {
    EXPECT_EQ(coding::decodeAs<Pace>(JSONValue(word), CodingPath()), expected) << word;
  }
}

Origin origin(std::string_view text) { return coding::decodeAs<Origin>(JSONValue::decode(text), CodingPath()); }

TEST(VariantTable, ReadsACaseByItsWordAndAnythingElseAsUnknown) {
  EXPECT_EQ(origin(R"({"type":"local","path":"p"})"), Origin{Local{"p"}});
  EXPECT_EQ(origin(R"({"path":"p","type":"here"})"), Origin{Local{"p"}});
  EXPECT_EQ(origin(R"({"type":"anywhere"})"), Origin{Anywhere()});
  EXPECT_EQ(origin(R"({"type":"named","name":"n","suffix":"s"})"), Origin{Named{"ns"}});
  for (const char* text : {R"({"type":"far","a":1})", R"({"a":1})", R"({"type":null})", R"({"type":7,"path":"p"})"}) {
    EXPECT_EQ(origin(text), Origin{Other{JSONValue::decode(text)}}) << text;
  }
  EXPECT_THROW(origin("[]"), DecodingError);
  EXPECT_THROW(origin(R"({"type":"local"})"), DecodingError);
}

TEST(VariantTable, WritesTheFirstWordOrTheTypeThatTheRecordSays) {
  const std::pair<Origin, const char*> rows[] = {
      {Origin{Local{"p"}}, R"({"type":"local","path":"p"})"},
      {Origin{Anywhere()}, R"({"type":"anywhere"})"},
      {Origin{Named{"n"}}, R"({"type":"NAMED","name":"n"})"},
      {Origin{Other{JSONValue::decode(R"({"a":1})")}}, R"({"a":1})"},
  };
  for (const auto& [value, expected] : rows) EXPECT_EQ(Codec<Origin>::encode(value).encode(), expected);
  EXPECT_EQ(Codec<Named>::encode(Named{"n"}).encode(), R"({"type":"NAMED","name":"n"})");
}

}  // namespace

}  // namespace ormel
