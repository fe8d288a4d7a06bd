#pragma once

#include <string>
#include <string_view>

#include "OrmelSDK/Platform/FileDescriptor.h"
#include "ormel-simulator/Machine/Files/FileTask.h"

namespace ormel::simulator {

/// Fails with `Refusal` if it is no regular file.
void requireRegularFile(const detail::FileDescriptor& file, const FileTask& task);

/// All that is left to read, if it is not more than one message can carry; else fails with `Refusal`.
std::string readWhole(const detail::FileDescriptor& file, const FileTask& task);

void writeWhole(const detail::FileDescriptor& file, std::string_view bytes, const FileTask& task);

/// Appends what is left to read in one file to another, however much it is.
void copyBytes(const detail::FileDescriptor& from, const detail::FileDescriptor& to, const FileTask& task);

}  // namespace ormel::simulator
