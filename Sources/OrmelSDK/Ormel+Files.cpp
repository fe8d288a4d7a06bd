#include "OrmelSDK/Management/FileCalls.h"
#include "OrmelSDK/Management/OneShotPerformer.h"
#include "OrmelSDK/Ormel.h"

namespace ormel {

namespace calls = detail::calls;

Task<FsReadFileResponse> Ormel::readFile(const std::string& path) const {
  return detail::perform(performer(), calls::readFile(path));
}

Task<void> Ormel::writeFile(const std::string& path, const std::string& dataBase64) const {
  return detail::perform(performer(), calls::writeFile(path, dataBase64));
}

Task<void> Ormel::createDirectory(const std::string& path, const CreateDirectoryParams& params) const {
  return detail::perform(performer(), calls::createDirectory(path, params));
}

Task<FsGetMetadataResponse> Ormel::getFileMetadata(const std::string& path) const {
  return detail::perform(performer(), calls::getFileMetadata(path));
}

Task<FsReadDirectoryResponse> Ormel::readDirectory(const std::string& path) const {
  return detail::perform(performer(), calls::readDirectory(path));
}

Task<void> Ormel::removePath(const std::string& path, const RemovePathParams& params) const {
  return detail::perform(performer(), calls::removePath(path, params));
}

Task<void> Ormel::copyPath(const std::string& sourcePath, const std::string& destinationPath,
                           const CopyPathParams& params) const {
  return detail::perform(performer(), calls::copyPath(sourcePath, destinationPath, params));
}

Task<FsWatchResponse> Ormel::watchPath(const std::string& watchID, const std::string& path) const {
  return detail::perform(performer(), calls::watchPath(watchID, path));
}

Task<void> Ormel::unwatchPath(const std::string& watchID) const {
  return detail::perform(performer(), calls::unwatchPath(watchID));
}

Task<FuzzyFileSearchResponse> Ormel::fuzzyFileSearch(const std::string& query, const std::vector<std::string>& roots,
                                                     const FuzzyFileSearchParams& params) const {
  return detail::perform(performer(), calls::fuzzyFileSearch(query, roots, params));
}

Task<GitDiffToRemoteResponse> Ormel::gitDiffToRemote(const std::string& workingDirectory) const {
  return detail::perform(performer(), calls::gitDiffToRemote(workingDirectory));
}

}  // namespace ormel
