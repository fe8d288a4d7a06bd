#include "OrmelSDK/Base/FileSystemError.h"

#include <utility>

namespace ormel {

FileSystemError::FileSystemError(std::string path, std::error_code code)
    : Error(path + ": " + code.message()), path_(std::move(path)), code_(code) {}

}  // namespace ormel
