#include "ormel-simulator/Catalogue/CatalogueState.h"

#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "OrmelSDK/Base/Error.h"
#include "ormel-simulator/Requests/FolderLock.h"

namespace ormel::simulator {

CatalogueDocument CatalogueState::read() const {
  if (folder_.empty()) return remembered_;
  std::error_code error;
  if (!std::filesystem::exists(file(), error) && !error) return CatalogueDocument();
  std::ifstream stream(file(), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (!stream) throw Error("the file " + file().string() + " cannot be read");
  try {
    const JSONValue root = JSONValue::decode(text);
    if (root.objectValue()) return CatalogueDocument(root);
  } catch (const Error& fault) {
    throw Error("the file " + file().string() + " is damaged: " + fault.description());
  }
  throw Error("the file " + file().string() + " is damaged: it does not hold an object");
}

CatalogueDocument CatalogueState::change(const std::function<void(CatalogueDocument&)>& edit) {
  if (folder_.empty()) {
    CatalogueDocument changed = remembered_;
    edit(changed);
    // The values that the edit put in are mostly parts of a larger message.
    remembered_ = CatalogueDocument(changed.json().detached());
    return remembered_;
  }
  const FolderLock lock(folder_);
  CatalogueDocument changed = read();
  edit(changed);
  write(changed);
  return changed;
}

// A reader finds the old state or the new one, also if this process dies in between.
void CatalogueState::write(const CatalogueDocument& document) const {
  const std::filesystem::path partial = file().string() + ".partial";
  std::ofstream stream(partial, std::ios::binary);
  stream << document.json().encode();
  stream.close();
  std::error_code error;
  if (stream) std::filesystem::rename(partial, file(), error);
  if (stream && !error) return;
  std::error_code ignored;
  std::filesystem::remove(partial, ignored);
  throw Error("cannot write the file " + file().string());
}

}  // namespace ormel::simulator
