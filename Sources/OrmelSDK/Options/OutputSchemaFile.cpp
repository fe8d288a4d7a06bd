#include "OrmelSDK/Options/OutputSchemaFile.h"

#include <algorithm>
#include <filesystem>
#include <stop_token>
#include <utility>
#include <vector>

#include "OrmelSDK/Base/UUID.h"
#include "OrmelSDK/Concurrency/Scheduler.h"
#include "OrmelSDK/Concurrency/UniqueFunction.h"
#include "OrmelSDK/Platform/BlockingWork.h"
#include "OrmelSDK/Platform/FileChanges.h"

namespace ormel {

namespace {

using Schema = std::map<std::string, JSONValue>;

JSONValue withSortedKeys(const JSONValue& value) {
  if (const auto* array = value.arrayValue()) {
    std::vector<JSONValue> elements;
    elements.reserve(array->size());
    for (const auto& element : *array) elements.push_back(withSortedKeys(element));
    return JSONValue::array(elements);
  }
  if (const auto* object = value.objectValue()) {
    std::vector<JSONMemberInit> members;
    members.reserve(object->size());
    for (const auto& [key, member] : *object) members.emplace_back(key, withSortedKeys(member));
    std::ranges::sort(members, {}, &JSONMemberInit::key);
    return JSONValue::object(members);
  }
  return value;
}

std::string encodedWithSortedKeys(const Schema& schema) {
  std::vector<JSONMemberInit> members;
  members.reserve(schema.size());
  for (const auto& [key, value] : schema) members.emplace_back(key, withSortedKeys(value));
  return JSONValue::object(members).encode();
}

std::string newDirectoryPath() {
  const std::filesystem::path above = detail::temporaryDirectory();
  return (above / ("ormel-output-schema-" + UUID::random().text())).string();
}

std::string schemaPathIn(const std::string& directory) { return directory + "/schema.json"; }

void writeSchemaIn(const std::string& directory, const Schema& schema) {
  detail::makeDirectories(directory);
  try {
    detail::writeFileAtomically(schemaPathIn(directory), encodedWithSortedKeys(schema));
  } catch (...) {
    detail::removeTree(directory);
    throw;
  }
}

/// Has work of the file system done to its end, whether or not its caller is told to stop meanwhile.
Task<void> onFileSystem(detail::UniqueFunction<void()> work) {
  return detail::runBlocking(detail::BlockingWork::onThreads(), std::move(work))
      .withStopToken(std::stop_token())
      .onScheduler(productionScheduler());
}

Task<void> removeDirectory(std::string directory) {
  try {
    auto removing = onFileSystem([directory] { detail::removeTree(directory); });
    co_await std::move(removing);
  } catch (...) {
    // There is no thread to be had, and the directory must not stay for that.
    detail::removeTree(directory);
  }
}

}  // namespace

OutputSchemaFile::OutputSchemaFile() : cleanup([] {}) {}

Task<OutputSchemaFile> createOutputSchemaFile(std::optional<Schema> schema) {
  OutputSchemaFile file;
  if (!schema) co_return file;
  const std::string directory = newDirectoryPath();
  auto writing = onFileSystem([directory, written = std::move(*schema)] { writeSchemaIn(directory, written); });
  co_await std::move(writing);
  file.schemaPath = schemaPathIn(directory);
  file.cleanup = [directory] { return removeDirectory(directory); };
  co_return file;
}

}  // namespace ormel
