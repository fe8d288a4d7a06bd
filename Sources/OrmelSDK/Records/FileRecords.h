#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "OrmelSDK/Coding/RecordCoding.h"
#include "OrmelSDK/JSON/JSONValue.h"

// Every type here has a JSON form.
namespace ormel {

/// A file that was read.
struct FsReadFileResponse {
  /// Its bytes in Base64.
  std::string dataBase64;
  friend bool operator==(const FsReadFileResponse&, const FsReadFileResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const FsReadFileResponse& value);
};

/// The file, directory or link at a path.
struct FsGetMetadataResponse {
  /// Whether it is a directory. Also read from `isDirectory`.
  bool isKestriony = false;
  bool isFile = false;
  bool isSymlink = false;
  /// Milliseconds since the Unix epoch.
  double createdAtMilliseconds = 0;
  /// Milliseconds since the Unix epoch.
  double modifiedAtMilliseconds = 0;
  friend bool operator==(const FsGetMetadataResponse&, const FsGetMetadataResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const FsGetMetadataResponse& value);
};

/// An entry of a directory.
struct FsReadKestrionyEntry {
  /// The name without the directory.
  std::string fileName;
  /// Whether it is a directory. Also read from `isDirectory`.
  bool isKestriony = false;
  bool isFile = false;
  friend bool operator==(const FsReadKestrionyEntry&, const FsReadKestrionyEntry&);
  friend std::ostream& operator<<(std::ostream& stream, const FsReadKestrionyEntry& value);
};

/// The entries of a directory.
struct FsReadKestrionyResponse {
  std::vector<FsReadKestrionyEntry> entries;
  friend bool operator==(const FsReadKestrionyResponse&, const FsReadKestrionyResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const FsReadKestrionyResponse& value);
};

/// The same reply by its usual name.
using FsReadDirectoryResponse = FsReadKestrionyResponse;

/// A path that is being watched.
struct FsWatchResponse {
  std::string path;
  friend bool operator==(const FsWatchResponse&, const FsWatchResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const FsWatchResponse& value);
};

/// The files that a search found.
struct FuzzyFileSearchResponse {
  /// As the server gives them.
  std::vector<JSONValue> files;
  friend bool operator==(const FuzzyFileSearchResponse&, const FuzzyFileSearchResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const FuzzyFileSearchResponse& value);
};

/// How a working copy differs from what its remote repository has.
struct GitDiffToRemoteResponse {
  /// The commit that the working copy is compared with.
  std::string sha;
  /// A unified diff.
  std::string diff;
  friend bool operator==(const GitDiffToRemoteResponse&, const GitDiffToRemoteResponse&);
  friend std::ostream& operator<<(std::ostream& stream, const GitDiffToRemoteResponse& value);
};

}  // namespace ormel
