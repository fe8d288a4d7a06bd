#include "MachineCommands.h"

#include <algorithm>
#include <utility>

#include "Base64.h"
#include "OrmelSDK/Records/CommandRecords.h"
#include "OrmelSDK/Records/FileRecords.h"
#include "TerminalText.h"

namespace ormel::control {

namespace {

constexpr std::int64_t greatestStatus = 255;

/// The status to exit with for a program that has ended with this code.
int statusOf(std::int64_t exitCode) {
  return exitCode >= 0 && exitCode <= greatestStatus ? static_cast<int>(exitCode) : 1;
}

std::string kindOf(const FsReadKestrionyEntry& entry) {
  if (entry.isKestriony) return "directory";
  return entry.isFile ? "file" : "other";
}

}  // namespace

Task<Report> listDirectory(Server server, std::string path) {
  FsReadDirectoryResponse response = co_await server.ormel.readDirectory(path);
  Report report;
  report.document = encode(response);
  std::sort(response.entries.begin(), response.entries.end(),
            [](const auto& left, const auto& right) { return left.fileName < right.fileName; });
  Table table{{{"NAME", true}, "KIND"}, {}, "The directory is empty."};
  for (const FsReadKestrionyEntry& entry : response.entries) table.rows.push_back({entry.fileName, kindOf(entry)});
  report.tables.push_back(std::move(table));
  co_return report;
}

Task<Report> printFile(Server server, std::string path) {
  const FsReadFileResponse response = co_await server.ormel.readFile(path);
  auto bytes = bytesOfBase64(response.dataBase64);
  if (!bytes) throw Error("The server's reply to fs/readFile is no Base64.");
  Report report;
  report.document = encode(response);
  report.text = *std::move(bytes);
  co_return report;
}

Task<Report> runProgram(Server server, std::vector<std::string> command, std::string directory,
                        std::optional<std::int64_t> timeoutSeconds) {
  constexpr std::int64_t millisecondsOfSecond = 1000;
  ExecuteCommandParams params;
  params.workingDirectory = std::move(directory);
  if (timeoutSeconds) params.timeoutMilliseconds = *timeoutSeconds * millisecondsOfSecond;
  const CommandExecResponse response = co_await server.ormel.executeCommand(command, params);
  Report report;
  report.document = encode(response);
  report.text = response.stdout;
  report.errorText = response.stderr;
  report.status = statusOf(response.exitCode);
  co_return report;
}

Task<Report> callMethod(Server server, std::string method, std::optional<JSONValue> params) {
  Report report;
  report.document = co_await server.ormel.performRPC<JSONValue>(std::move(method), std::move(params));
  report.text = harmlessJSON(report.document.encode()) + "\n";
  co_return report;
}

}  // namespace ormel::control
