#include "OrmelSDK/Coding/WordIndex.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "OrmelSDK/JSON/JSONStorage.h"
#include "OrmelSDK/JSON/JSONValue.h"

namespace ormel::coding {

namespace {

consteval auto someWords() {
  WordList<16> list;
  for (const std::string_view word :
       {"id", "text", "threadId", "thread_id", "turnId", "id", "Key", "a;b", "memoryCitation", "exactly16bytes__",
        "seventeen_bytes__", "item.autoApprovalReview.started", "item.auto_approval_review.started", "text", "t"}) {
    list.add(word);
  }
  return list;
}

constexpr auto table = WordTable<someWords().count>(someWords());
constexpr WordIndex words = table.index();

std::size_t find(std::string_view text) {
  const JSONValue value(text);
  return words.find(detail::JSONAccess::data(value));
}

std::array<const JSONValue*, someWords().count> found(const JSONValue& object) {
  std::array<const JSONValue*, someWords().count> values{};
  findMembers(*object.objectValue(), words, values.data());
  return values;
}

}  // namespace

TEST(WordIndex, FindsEachWordAtItsPlace) {
  EXPECT_EQ(words.size(), 13u);
  for (std::size_t position = 0; position < words.size(); ++position) {
    EXPECT_EQ(find(words[position]), position) << words[position];
  }
}

TEST(WordIndex, KeepsOnePlaceForAWordThatIsGivenTwice) {
  EXPECT_EQ(words[find("id")], "id");
  EXPECT_EQ(find("id"), 0u);
  EXPECT_EQ(find("text"), 1u);
}

TEST(WordIndex, FindsNothingElse) {
  for (std::size_t position = 0; position < words.size(); ++position) {
    const std::string word(words[position]);
    for (std::size_t at = 0; at < word.size(); ++at) {
      std::string other = word;
      other[at] = '~';
      EXPECT_EQ(find(other), WordIndex::none) << other;
    }
    EXPECT_EQ(find(word + '~'), WordIndex::none) << word;
    EXPECT_EQ(find(std::string_view(word).substr(1) == "" ? "~" : word.substr(1)), WordIndex::none) << word;
  }
  EXPECT_EQ(find(""), WordIndex::none);
  EXPECT_EQ(find(std::string_view("id\0", 3)), WordIndex::none);
  EXPECT_EQ(find(std::string(1000, 'x')), WordIndex::none);
}

TEST(WordIndex, PutsMembersAtThePlacesOfTheirKeys) {
  const JSONValue object = JSONValue::decode(R"({"text":"t","other":1,"threadId":"x","thread_id":null})");
  const auto values = found(object);
  EXPECT_EQ(values[find("text")], object.find("text"));
  EXPECT_EQ(values[find("threadId")], object.find("threadId"));
  EXPECT_EQ(values[find("thread_id")], object.find("thread_id"));
  EXPECT_EQ(values[find("id")], nullptr);
}

TEST(WordIndex, FindsMembersOfObjectsOfAnySize) {
  std::string text = R"({"turnId":"t")";
  for (int key = 0; key < 200; ++key) text += ",\"key" + std::to_string(key) + "\":" + std::to_string(key);
  const JSONValue object = JSONValue::decode(text + '}');
  EXPECT_EQ(found(object)[find("turnId")], object.find("turnId"));
  EXPECT_EQ(found(JSONValue::object())[find("turnId")], nullptr);
}

// The Kelvin sign and the Greek question mark are the letter K and the semicolon.
TEST(WordIndex, FindsMembersByCanonicallyEquivalentKeys) {
  const JSONValue object = JSONValue::decode("{\"\u212Aey\":1,\"a\u037Eb\":2,\"t\u00E9xt\":3}");
  const auto values = found(object);
  EXPECT_EQ(values[find("Key")], object.find("Key"));
  ASSERT_NE(values[find("Key")], nullptr);
  EXPECT_EQ(values[find("a;b")], object.find("a;b"));
  EXPECT_EQ(values[find("text")], nullptr);
}

}  // namespace ormel::coding
