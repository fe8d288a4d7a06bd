#pragma once

#include <string>
#include <vector>

#include "OrmelSDK/Management/Call.h"
#include "OrmelSDK/Management/FileParams.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/FileRecords.h"

/// The calls about files, by the names of the operations that perform them.
namespace ormel::detail::calls {

Call<FsReadFileResponse> readFile(const std::string& path);
DroppedCall<EmptyRPCResponse> writeFile(const std::string& path, const std::string& dataBase64);
DroppedCall<EmptyRPCResponse> createDirectory(const std::string& path, const CreateDirectoryParams& params);
Call<FsGetMetadataResponse> getFileMetadata(const std::string& path);
Call<FsReadDirectoryResponse> readDirectory(const std::string& path);
DroppedCall<EmptyRPCResponse> removePath(const std::string& path, const RemovePathParams& params);
DroppedCall<EmptyRPCResponse> copyPath(const std::string& sourcePath, const std::string& destinationPath,
                                       const CopyPathParams& params);
Call<FsWatchResponse> watchPath(const std::string& watchID, const std::string& path);
DroppedCall<EmptyRPCResponse> unwatchPath(const std::string& watchID);
Call<FuzzyFileSearchResponse> fuzzyFileSearch(const std::string& query, const std::vector<std::string>& roots,
                                              const FuzzyFileSearchParams& params);
Call<GitDiffToRemoteResponse> gitDiffToRemote(const std::string& workingDirectory);

}  // namespace ormel::detail::calls
