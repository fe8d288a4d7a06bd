#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>
#include <string_view>

#include "OrmelSDK/OrmelSDK.h"

namespace {

std::set<std::string> headersIn(const std::string& file, std::string_view before, std::string_view after) {
  std::ifstream lines(std::string(ORMEL_PROJECT_SOURCE "/") + file);
  std::set<std::string> headers;
  for (std::string line; std::getline(lines, line);) {
    if (line.size() <= before.size() + after.size() || !line.starts_with(before) || !line.ends_with(after)) continue;
    headers.insert(line.substr(before.size(), line.size() - before.size() - after.size()));
  }
  return headers;
}

}  // namespace

TEST(PublicHeaders, AreAllIncludedByTheHeaderOfEverything) {
  auto installed = headersIn("cmake/public-headers.txt", "", "");
  std::erase_if(installed, [](const std::string& line) { return line.starts_with("#"); });
  EXPECT_EQ(installed.erase("OrmelSDK/OrmelSDK.h"), 1u);
  EXPECT_EQ(headersIn("Sources/OrmelSDK/OrmelSDK.h", "#include \"", "\""), installed);
}

TEST(PublicHeaders, ServeAnApplicationByOneInclude) {
  const auto item = ormel::decode<ormel::ThreadItem>(ormel::JSONValue::decode(R"({"type":"sleep","id":"s"})"));
  EXPECT_EQ(item.id(), "s");
}
