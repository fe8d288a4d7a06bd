#include "OrmelSDK/Management/FileCalls.h"

#include "OrmelSDK/Coding/ParamsTable.h"

namespace ormel::detail::calls {

Call<FsReadFileResponse> readFile(const std::string& path) { return {"fs/readFile", callParams({{"path", path}})}; }

DroppedCall<EmptyRPCResponse> writeFile(const std::string& path, const std::string& dataBase64) {
  return {{"fs/writeFile", callParams({{"path", path}, {"dataBase64", dataBase64}})}};
}

DroppedCall<EmptyRPCResponse> createDirectory(const std::string& path, const CreateDirectoryParams& params) {
  return {{"fs/createDirectory", callParams({{"path", path}}, params)}};
}

Call<FsGetMetadataResponse> getFileMetadata(const std::string& path) {
  return {"fs/getMetadata", callParams({{"path", path}})};
}

Call<FsReadDirectoryResponse> readDirectory(const std::string& path) {
  return {"fs/readDirectory", callParams({{"path", path}})};
}

DroppedCall<EmptyRPCResponse> removePath(const std::string& path, const RemovePathParams& params) {
  return {{"fs/remove", callParams({{"path", path}}, params)}};
}

DroppedCall<EmptyRPCResponse> copyPath(const std::string& sourcePath, const std::string& destinationPath,
                                       const CopyPathParams& params) {
  return {{"fs/copy", callParams({{"sourcePath", sourcePath}, {"destinationPath", destinationPath}}, params)}};
}

Call<FsWatchResponse> watchPath(const std::string& watchID, const std::string& path) {
  return {"fs/watch", callParams({{"watchId", watchID}, {"path", path}})};
}

DroppedCall<EmptyRPCResponse> unwatchPath(const std::string& watchID) {
  return {{"fs/unwatch", callParams({{"watchId", watchID}})}};
}

Call<FuzzyFileSearchResponse> fuzzyFileSearch(const std::string& query, const std::vector<std::string>& roots,
                                              const FuzzyFileSearchParams& params) {
  return {"fuzzyFileSearch", callParams({{"query", query}, {"roots", argument(roots)}}, params)};
}

Call<GitDiffToRemoteResponse> gitDiffToRemote(const std::string& workingDirectory) {
  return {"gitDiffToRemote", callParams({{"cwd", workingDirectory}})};
}

}  // namespace ormel::detail::calls
