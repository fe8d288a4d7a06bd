#include "OrmelSDK/Concurrency/Ref.h"

namespace ormel::detail {

RefCounted::~RefCounted() = default;

}  // namespace ormel::detail
