#pragma once

#include <filesystem>
#include <functional>

#include "OrmelSDK/JSON/JSONValue.h"
#include "ormel-simulator/Catalogue/JSONEditing.h"

namespace ormel::simulator {

/// All that the catalogue remembers, as one JSON object. Copied freely.
class CatalogueDocument {
 public:
  explicit CatalogueDocument(JSONValue root = JSONValue::object()) : root_(std::move(root)) {}

  const JSONValue& json() const noexcept { return root_; }
  /// Null if there is nothing.
  JSONValue at(const KeyPath& path) const { return valueAt(root_, path); }
  /// Null removes.
  void put(const KeyPath& path, const JSONValue& value) { root_ = withValueAt(root_, path, value); }

 private:
  JSONValue root_;
};

/// The catalogue's memory, in a file of the state folder, if there is one, so that it outlives the process.
///
/// Nothing is read before it is asked for. Other processes may use the same folder: what is read is the newest, and a
/// change is made to the newest under the folder's lock. Fails with `Error` where the file cannot be used.
class CatalogueState {
 public:
  /// An empty path stands for no folder.
  explicit CatalogueState(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// The file, whether or not there is one yet; empty without a folder.
  std::filesystem::path file() const { return folder_.empty() ? folder_ : folder_ / "catalogue"; }

  CatalogueDocument read() const;

  /// Makes the change and keeps it, unless `edit` fails. Returns what there is then.
  CatalogueDocument change(const std::function<void(CatalogueDocument&)>& edit);

 private:
  void write(const CatalogueDocument& document) const;

  std::filesystem::path folder_;
  /// Where there is no folder.
  CatalogueDocument remembered_;
};

}  // namespace ormel::simulator
