#include <gtest/gtest.h>
#include <simdjson.h>

#include <tuple>

#include "OrmelSDK/JSON/JSONDecoding.h"
#include "OrmelSDK/JSON/JSONReaderChoice.h"

namespace {

using ormel::detail::tapeLayoutIsKnown;

TEST(JSONReader, WorksOnTheTapeOfTestedReleasesOnly) {
  EXPECT_TRUE(tapeLayoutIsKnown(3, 0, 1));
  const std::tuple<int, int, int> others[] = {{2, 2, 3}, {3, 0, 0}, {3, 0, 2}, {3, 1, 0},
                                              {3, 1, 1}, {4, 0, 1}, {30, 1, 0}};
  for (const auto& [major, minor, revision] : others) {
    EXPECT_FALSE(tapeLayoutIsKnown(major, minor, revision)) << major << '.' << minor << '.' << revision;
  }
}

TEST(JSONReader, IsTheOneThatTheBuildAsksFor) {
#ifdef ORMEL_JSON_PUBLIC_INTERFACE
  EXPECT_FALSE(ormel::detail::decodesFromTape());
#else
  EXPECT_EQ(ormel::detail::decodesFromTape(),
            tapeLayoutIsKnown(simdjson::SIMDJSON_VERSION_MAJOR, simdjson::SIMDJSON_VERSION_MINOR,
                              simdjson::SIMDJSON_VERSION_REVISION));
#endif
}

}  // namespace
