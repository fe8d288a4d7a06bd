#include "ormel-simulator/Machine/Search/FileSearchRequest.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "ormel-simulator/Machine/Search/FuzzyMatch.h"
#include "ormel-simulator/Requests/Refusal.h"
#include "ormel-simulator/Requests/RequestParams.h"

namespace ormel::simulator {

namespace {

constexpr std::size_t mostFilesFound = 50;
/// So that the client never waits long, whatever it names as a root.
constexpr std::size_t mostEntriesSeen = 100'000;

struct FoundFile {
  std::string root;
  std::string path;
  FuzzyMatch match;

  friend bool operator<(const FoundFile& left, const FoundFile& right) {
    // The best first; of equal ones, the shortest.
    return std::forward_as_tuple(right.match.score, left.path.size(), left.path, left.root) <
           std::forward_as_tuple(left.match.score, right.path.size(), right.path, right.root);
  }

  JSONValue json() const {
    const std::vector<JSONValue> indices(match.indices.begin(), match.indices.end());
    return JSONValue::object({{"root", root},
                              {"path", path},
                              {"fileName", path.substr(path.rfind('/') + 1)},
                              {"score", match.score},
                              {"indices", JSONValue::array(indices)}});
  }
};

class FileSearch {
 public:
  explicit FileSearch(std::string query) : query_(std::move(query)) {}

  void searchIn(const std::string& root) {
    std::error_code error;
    std::filesystem::directory_iterator entries(root, error);
    if (error) throw Refusal(invalidRequest, "cannot search in " + root + ": " + error.message());
    // Floor by floor, so that what lies deep is missed first. A folder is named from the root on.
    std::deque<std::filesystem::path> folders = {""};
    for (; !folders.empty(); folders.pop_front()) {
      const std::filesystem::path& folder = folders.front();
      // A folder that cannot be read is passed over, as is one that goes away meanwhile.
      entries = std::filesystem::directory_iterator(std::filesystem::path(root) / folder, error);
      for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        if (++seen_ > mostEntriesSeen) return;
        std::error_code unknown;
        const auto type = entries->symlink_status(unknown).type();
        const std::filesystem::path name = entries->path().filename();
        if (type == std::filesystem::file_type::directory && name != ".git") folders.push_back(folder / name);
        if (type == std::filesystem::file_type::regular) consider(root, (folder / name).string());
      }
    }
  }

  JSONValue result() {
    const std::size_t count = std::min(found_.size(), mostFilesFound);
    const auto end = found_.begin() + static_cast<std::ptrdiff_t>(count);
    std::partial_sort(found_.begin(), end, found_.end());
    std::vector<JSONValue> files;
    files.reserve(count);
    for (std::size_t index = 0; index < count; ++index) files.push_back(found_[index].json());
    return JSONValue::object({{"files", JSONValue::array(files)}});
  }

 private:
  void consider(const std::string& root, std::string path) {
    if (auto match = matchFuzzily(query_, path)) found_.push_back({root, std::move(path), std::move(*match)});
  }

  std::string query_;
  std::vector<FoundFile> found_;
  std::size_t seen_ = 0;
};

JSONValue searchFiles(const RequestParams& params) {
  const JSONValue* query = params.json().find("query");
  const auto text = query ? query->stringValue() : std::nullopt;
  if (!text) throw Refusal(invalidParams, "query must be a text");
  const auto roots = params.texts("roots");
  // Nothing could cancel a search that is done when it is answered.
  params.textIfGiven("cancellationToken");
  FileSearch search{std::string(*text)};
  for (const std::string& root : roots) search.searchIn(root);
  return search.result();
}

}  // namespace

void addFileSearchRequest(RequestTable& table) {
  table["fuzzyFileSearch"] = [](const JSONValue& params) { return searchFiles(RequestParams(params)); };
}

}  // namespace ormel::simulator
