#include "OrmelSDK/Items/DynamicToolCallItems.h"

#include <string>

#include "OrmelSDK/Coding/RecordCodec.h"
#include "OrmelSDK/Items/DynamicToolCallItemsTables.h"

namespace ormel::coding {

DynamicToolCallOutputContentItem VariantTable<DynamicToolCallOutputContentItem>::decodeUnknown(std::string_view type,
                                                                                               const JSONValue&,
                                                                                               const CodingPath& path) {
  failCorrupted("Unknown dynamic tool content type: " + std::string(type), path.at("type"));
}

}  // namespace ormel::coding

ORMEL_DEFINE_ENUMERATION(DynamicToolCallStatus)
ORMEL_DEFINE_VARIANT(DynamicToolCallOutputContentItem)
ORMEL_DEFINE_RECORD(DynamicToolCallItem)
