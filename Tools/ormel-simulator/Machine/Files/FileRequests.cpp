#include "ormel-simulator/Machine/Files/FileRequests.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "ormel-simulator/Machine/Base64.h"
#include "ormel-simulator/Machine/Files/FileBytes.h"
#include "ormel-simulator/Machine/Platform/FileTimes.h"
#include "ormel-simulator/Requests/Refusal.h"
#include "ormel-simulator/Requests/RequestParams.h"

namespace ormel::simulator {

namespace {

constexpr mode_t newFolderMode = 0777;

JSONValue readFile(FileRoot& root, const RequestParams& params) {
  const FileTask task("read", params.text("path"));
  const detail::FileDescriptor file = root.find(task).open(O_RDONLY, task);
  requireRegularFile(file, task);
  return JSONValue::object({{"dataBase64", base64Of(readWhole(file, task))}});
}

JSONValue writeFile(FileRoot& root, const RequestParams& params) {
  const FileTask task("write", params.text("path"));
  const auto data = params.json().find("dataBase64") ? params.json().find("dataBase64")->stringValue() : std::nullopt;
  const auto bytes = data ? bytesOfBase64(*data) : std::nullopt;
  if (!bytes) throw Refusal(invalidParams, "dataBase64 must be a text in Base64");
  const detail::FileDescriptor file = root.find(task).open(O_WRONLY | O_CREAT, task);
  // Cut off only now that it is known what it is.
  requireRegularFile(file, task);
  if (::ftruncate(file.number(), 0) != 0) task.failBy(errno);
  writeWhole(file, *bytes, task);
  return JSONValue::object();
}

JSONValue makeFolder(FileRoot& root, const RequestParams& params) {
  const FileTask task("make the folder", params.text("path"));
  if (params.flag("recursive")) {
    root.makeFolders(task);
  } else {
    const Place place = root.find(task);
    if (::mkdirat(place.folder.number(), place.name.c_str(), newFolderMode) != 0) task.failBy(errno);
  }
  return JSONValue::object();
}

JSONValue tellAbout(FileRoot& root, const RequestParams& params) {
  const FileTask task("look at", params.text("path"));
  const Place place = root.find(task);
  const struct stat found = place.look(task);
  return JSONValue::object({{"isKestriony", S_ISDIR(found.st_mode)},
                            {"isFile", S_ISREG(found.st_mode)},
                            {"isSymlink", S_ISLNK(found.st_mode)},
                            {"createdAtMs", creationMilliseconds(place.folder.number(), place.name, found)},
                            {"modifiedAtMs", modificationMilliseconds(found)}});
}

JSONValue listFolder(FileRoot& root, const RequestParams& params) {
  const FileTask task("list", params.text("path"));
  const detail::FileDescriptor folder = root.find(task).open(O_RDONLY | O_DIRECTORY, task);
  std::vector<JSONValue> entries;
  for (const std::string& name : namesIn(folder, task)) {
    struct stat found{};
    // It may have gone since.
    if (::fstatat(folder.number(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) continue;
    entries.push_back(JSONValue::object(
        {{"fileName", name}, {"isKestriony", S_ISDIR(found.st_mode)}, {"isFile", S_ISREG(found.st_mode)}}));
  }
  return JSONValue::object({{"entries", JSONValue::array(entries)}});
}

}  // namespace

void addFileRequests(RequestTable& table, FileRoot& root) {
  const auto add = [&](const char* method, JSONValue (*handle)(FileRoot&, const RequestParams&)) {
    table[method] = [&root, handle](const JSONValue& params) { return handle(root, RequestParams(params)); };
  };
  add("fs/readFile", readFile);
  add("fs/writeFile", writeFile);
  add("fs/createDirectory", makeFolder);
  add("fs/getMetadata", tellAbout);
  add("fs/readDirectory", listFolder);
}

}  // namespace ormel::simulator
