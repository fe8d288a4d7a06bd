#include "OrmelSDK/Records/FileRecords.h"

#include "OrmelSDK/Coding/RecordCodec.h"

template <>
struct ormel::coding::RecordTable<ormel::FsReadFileResponse> {
  static constexpr Field fields[] = {
      required<&FsReadFileResponse::dataBase64>("dataBase64"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FsGetMetadataResponse> {
  static constexpr Field fields[] = {
      required<&FsGetMetadataResponse::isKestriony>("isKestriony", "isDirectory"),
      required<&FsGetMetadataResponse::isFile>("isFile"),
      required<&FsGetMetadataResponse::isSymlink>("isSymlink"),
      required<&FsGetMetadataResponse::createdAtMilliseconds>("createdAtMs"),
      required<&FsGetMetadataResponse::modifiedAtMilliseconds>("modifiedAtMs"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FsReadKestrionyEntry> {
  static constexpr Field fields[] = {
      required<&FsReadKestrionyEntry::fileName>("fileName"),
      required<&FsReadKestrionyEntry::isKestriony>("isKestriony", "isDirectory"),
      required<&FsReadKestrionyEntry::isFile>("isFile"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FsReadKestrionyResponse> {
  static constexpr Field fields[] = {
      required<&FsReadKestrionyResponse::entries>("entries"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FsWatchResponse> {
  static constexpr Field fields[] = {
      required<&FsWatchResponse::path>("path"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::FuzzyFileSearchResponse> {
  static constexpr Field fields[] = {
      required<&FuzzyFileSearchResponse::files>("files"),
  };
};

template <>
struct ormel::coding::RecordTable<ormel::GitDiffToRemoteResponse> {
  static constexpr Field fields[] = {
      required<&GitDiffToRemoteResponse::sha>("sha"),
      required<&GitDiffToRemoteResponse::diff>("diff"),
  };
};

ORMEL_DEFINE_RECORD(FsReadFileResponse)
ORMEL_DEFINE_RECORD(FsGetMetadataResponse)
ORMEL_DEFINE_RECORD(FsReadKestrionyEntry)
ORMEL_DEFINE_RECORD(FsReadKestrionyResponse)
ORMEL_DEFINE_RECORD(FsWatchResponse)
ORMEL_DEFINE_RECORD(FuzzyFileSearchResponse)
ORMEL_DEFINE_RECORD(GitDiffToRemoteResponse)
