#include "ormel-simulator/Machine/Files/FileWatches.h"

#include <fcntl.h>

#include <set>
#include <utility>

#include "ormel-simulator/Requests/Refusal.h"
#include "ormel-simulator/Requests/RequestParams.h"

namespace ormel::simulator {

namespace {

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace

void FileWatches::addRequests(RequestTable& table) {
  table["fs/watch"] = [this](const JSONValue& params) { return watch(params); };
  table["fs/unwatch"] = [this](const JSONValue& params) { return unwatch(params); };
}

void FileWatches::addDescriptors(std::vector<pollfd>& descriptors) const {
  for (const auto& entry : watches_) descriptors.push_back({entry.second.folder.descriptor(), POLLIN, 0});
}

JSONValue FileWatches::watch(const JSONValue& params) {
  const RequestParams read(params);
  const std::string id = read.text("watchId");
  const FileTask task("watch", read.text("path"));
  if (watches_.contains(id)) throw Refusal(invalidRequest, "there is a watch " + id + " already");
  const Place place = root_.find(task);
  const struct stat found = place.look(task);
  if (S_ISDIR(found.st_mode)) {
    watches_.emplace(id, Watch{FolderWatch(place.open(O_RDONLY | O_DIRECTORY, task)), place.absolutePath, ""});
  } else {
    // By its folder, since what replaces a file is another one of its name.
    watches_.emplace(id, Watch{FolderWatch(place.folder), folderOf(place.absolutePath), place.name});
  }
  return JSONValue::object({{"path", place.absolutePath}});
}

JSONValue FileWatches::unwatch(const JSONValue& params) {
  const std::string id = RequestParams(params).text("watchId");
  if (watches_.erase(id) == 0) throw Refusal(invalidRequest, "there is no watch " + id);
  return JSONValue::object();
}

void FileWatches::serve() {
  for (auto& [id, watch] : watches_) report(id, watch);
}

void FileWatches::report(const std::string& id, Watch& watch) {
  std::set<std::string> paths;
  for (const std::string& changed : watch.folder.takeChanges()) {
    // A change of the folder itself may be one of each entry.
    const std::string& name = changed.empty() ? watch.name : changed;
    const bool counts = watch.name.empty() || name == watch.name;
    if (counts) paths.insert(name.empty() ? watch.folderPath : watch.folderPath + "/" + name);
  }
  if (paths.empty()) return;
  const JSONValue changedPaths = JSONValue::array(std::vector<JSONValue>(paths.begin(), paths.end()));
  client_.notify("fs/changed", JSONValue::object({{"watchId", id}, {"changedPaths", changedPaths}}));
}

}  // namespace ormel::simulator
