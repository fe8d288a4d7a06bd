// An application as others write it, compiled with hidden visibility: uses the library by its public headers only, and
// looks whether values, exceptions and conversations pass the library's boundary.
// Usage: application SIMULATOR

#include <OrmelSDK/Ormel.h>
#include <OrmelSDK/OrmelSDK.h>
#include <OrmelSDK/Version.h>

#include <exception>
#include <iostream>
#include <limits>
#include <string>
#include <string_view>

#if ORMEL_VERSION < ORMEL_MAKE_VERSION(0, 1, 0) || ORMEL_ABI_VERSION != 1
#error "These are the headers of another version."
#endif
static_assert(ORMEL_VERSION == ORMEL_MAKE_VERSION(ormel::versionMajor, ormel::versionMinor, ormel::versionPatch));
static_assert(ormel::abiVersion == ORMEL_ABI_VERSION);
static_assert(std::string_view(ormel::versionText) == APPLICATION_EXPECTS_VERSION);

namespace {

int failures = 0;

void expect(bool holds, std::string_view what) {
  if (holds) return;
  std::cerr << "application: " << what << '\n';
  ++failures;
}

// The library throws, the application catches by the very type, and by the common base.
template <typename Failure, typename Action>
void expectFailure(std::string_view what, Action action) {
  for (const bool byBase : {false, true}) {
    try {
      try {
        action();
      } catch (const Failure& failure) {
        if (byBase) throw;
        continue;
      }
      expect(false, what);
    } catch (const ormel::Error&) {
      expect(byBase, what);
    } catch (const std::exception&) {
      expect(false, what);
    }
  }
}

void exceptionsPass() {
  expectFailure<ormel::EncodingError>("an encoding error is not caught by its type",
                                      [] { ormel::JSONValue(std::numeric_limits<double>::infinity()).encode(); });
  expectFailure<ormel::DecodingError>("a decoding error is not caught by its type", [] {
    ormel::decode<ormel::ThreadItem>(ormel::JSONValue::decode(R"({"type":"agentMessage"})"));
  });
  expectFailure<ormel::Error>("a missing server is not caught", [] {
    ormel::OrmelOptions options;
    options.ormelPathOverride = "/nonexistent/server";
    ormel::Ormel(options).startThread().run("hello").get();
  });
}

void valuesPass() {
  const auto item = ormel::decode<ormel::ThreadItem>(ormel::JSONValue::decode(R"({"type":"sleep","id":"s"})"));
  expect(item.id() == "s", "an item is not decoded");
  const auto copy = item;
  expect(copy == item, "a copy of an item is another item");
}

// The library calls code of the application, whose exception it catches: a tool's failure is told to the agent by its
// text, also by way of a type that only the library's headers know.
void conversationsPass(const std::string& simulator) {
  ormel::OrmelOptions options;
  options.ormelPathOverride = simulator;
  int calls = 0;
  ormel::DynamicToolSpec spec;
  spec.name = "refuse";
  spec.description = "Refuses";
  spec.inputSchema = ormel::JSONValue::object({{"type", "object"}});
  const auto refuse = [&](const ormel::DynamicToolCallContext&) -> ormel::DynamicToolResult {
    ++calls;
    throw ormel::HandlerError("refused by the application");
  };
  ormel::ThreadOptions threadOptions;
  threadOptions.dynamicTools = {ormel::DynamicTool{spec, refuse}};
  const ormel::Thread thread = ormel::Ormel(options).startThread(threadOptions);
  const ormel::Turn turn = thread.run("use tool refuse").get();
  expect(calls == 1, "the tool was not called once");
  expect(turn.finalResponse.find("refused by the application") != std::string::npos,
         "the failure of the tool was not told: " + std::string(turn.finalResponse));
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  if (argumentCount != 2) return 2;
  exceptionsPass();
  valuesPass();
  conversationsPass(arguments[1]);
  if (failures == 0) std::cout << "The library serves.\n";
  return failures == 0 ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << "application: " << error.what() << '\n';
  return 1;
}
