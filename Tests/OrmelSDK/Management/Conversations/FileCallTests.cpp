#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "OrmelSDK/Management/FileParams.h"
#include "OrmelSDK/Records/EmptyResponses.h"
#include "OrmelSDK/Records/FileRecords.h"
#include "Support/CallRows.h"

namespace {

using namespace ormel;
using namespace ormel::testing;

const ReplyRecords fileRecords = {
    {"fs/readFile", "FsReadFileResponse"},
    {"fs/writeFile", "EmptyRPCResponse"},
    {"fs/createDirectory", "EmptyRPCResponse"},
    {"fs/getMetadata", "FsGetMetadataResponse"},
    {"fs/readDirectory", "FsReadKestrionyResponse"},
    {"fs/remove", "EmptyRPCResponse"},
    {"fs/copy", "EmptyRPCResponse"},
    {"fs/watch", "FsWatchResponse"},
    {"fs/unwatch", "EmptyRPCResponse"},
    {"fuzzyFileSearch", "FuzzyFileSearchResponse"},
    {"gitDiffToRemote", "GitDiffToRemoteResponse"},
};

const CallRow fileRows[] = {
    onOrmel(R"({"id":2,"method":"fs/readFile","params":{"path":"/f \"g\""}})", R"({"dataBase64":"eA=="})",
            [](const Ormel& ormel) { return ormel.readFile("/f \"g\""); }),
    onOrmel(R"({"id":2,"method":"fs/writeFile","params":{"path":"/f","dataBase64":"eA=="}})", R"({"more":1})", "null",
            [](const Ormel& ormel) { return ormel.writeFile("/f", "eA=="); }),
    onOrmel(R"({"id":2,"method":"fs/writeFile","params":{"path":"","dataBase64":""}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.writeFile("", ""); }),
    onOrmel(R"({"id":2,"method":"fs/createDirectory","params":{"path":"/d"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.createDirectory("/d"); }),
    onOrmel(R"({"id":2,"method":"fs/createDirectory","params":{"path":"/d","recursive":true}})", "{}", "null",
            [](const Ormel& ormel) {
              CreateDirectoryParams params;
              params.recursive = true;
              return ormel.createDirectory("/d", params);
            }),
    onOrmel(R"({"id":2,"method":"fs/createDirectory","params":{"path":"/d","recursive":false}})", "{}", "null",
            [](const Ormel& ormel) {
              CreateDirectoryParams params;
              params.recursive = false;
              return ormel.createDirectory("/d", params);
            }),
    onOrmel(R"({"id":2,"method":"fs/getMetadata","params":{"path":"/f"}})",
            R"({"isKestriony":true,"isFile":false,"isSymlink":true,"createdAtMs":1700000000000.5,"modifiedAtMs":2})",
            [](const Ormel& ormel) { return ormel.getFileMetadata("/f"); }),
    onOrmel(R"({"id":2,"method":"fs/readDirectory","params":{"path":"/d"}})", R"({"entries":[]})",
            [](const Ormel& ormel) { return ormel.readDirectory("/d"); }),
    onOrmel(R"({"id":2,"method":"fs/readDirectory","params":{"path":"/d"}})",
            R"({"entries":[{"fileName":"a","isKestriony":false,"isFile":true},)"
            R"({"fileName":"b","isKestriony":true,"isFile":false}]})",
            [](const Ormel& ormel) { return ormel.readDirectory("/d"); }),
    onOrmel(R"({"id":2,"method":"fs/remove","params":{"path":"/f"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.removePath("/f"); }),
    onOrmel(R"({"id":2,"method":"fs/remove","params":{"path":"/f","recursive":true,"force":false}})", "{}", "null",
            [](const Ormel& ormel) {
              RemovePathParams params;
              params.recursive = true;
              params.force = false;
              return ormel.removePath("/f", params);
            }),
    onOrmel(R"({"id":2,"method":"fs/remove","params":{"path":"/f","recursive":false,"force":true}})", "{}", "null",
            [](const Ormel& ormel) {
              RemovePathParams params;
              params.recursive = false;
              params.force = true;
              return ormel.removePath("/f", params);
            }),
    onOrmel(R"({"id":2,"method":"fs/copy","params":{"sourcePath":"/a","destinationPath":"/b"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.copyPath("/a", "/b"); }),
    onOrmel(R"({"id":2,"method":"fs/copy","params":{"sourcePath":"/a","destinationPath":"/b","recursive":true}})", "{}",
            "null",
            [](const Ormel& ormel) {
              CopyPathParams params;
              params.recursive = true;
              return ormel.copyPath("/a", "/b", params);
            }),
    onOrmel(R"({"id":2,"method":"fs/copy","params":{"sourcePath":"/a","destinationPath":"/b","recursive":false}})",
            "{}", "null",
            [](const Ormel& ormel) {
              CopyPathParams params;
              params.recursive = false;
              return ormel.copyPath("/a", "/b", params);
            }),
    onOrmel(R"({"id":2,"method":"fs/watch","params":{"watchId":"w","path":"/f"}})", R"({"path":"/private/f"})",
            [](const Ormel& ormel) { return ormel.watchPath("w", "/f"); }),
    onOrmel(R"({"id":2,"method":"fs/unwatch","params":{"watchId":"w"}})", "{}", "null",
            [](const Ormel& ormel) { return ormel.unwatchPath("w"); }),
    onOrmel(R"({"id":2,"method":"fuzzyFileSearch","params":{"query":"q","roots":["/a","/b"],)"
            R"("cancellationToken":null}})",
            R"({"files":[]})", [](const Ormel& ormel) { return ormel.fuzzyFileSearch("q", {"/a", "/b"}); }),
    onOrmel(R"({"id":2,"method":"fuzzyFileSearch","params":{"query":"","roots":[],"cancellationToken":"t"}})",
            R"({"files":[{"path":"a","score":1.5},null,"b"]})",
            [](const Ormel& ormel) {
              FuzzyFileSearchParams params;
              params.cancellationToken = "t";
              return ormel.fuzzyFileSearch("", {}, params);
            }),
    onOrmel(R"({"id":2,"method":"gitDiffToRemote","params":{"cwd":"/w"}})", R"({"sha":"abc","diff":"--- a\n+++ b\n"})",
            [](const Ormel& ormel) { return ormel.gitDiffToRemote("/w"); }),
};

TEST(FileCalls, GoOutExactly) { expectCalls(fileRows); }

TEST(FileCalls, FailByTheirRecordAndByTheServersError) { expectFailures(fileRows, fileRecords); }

}  // namespace
