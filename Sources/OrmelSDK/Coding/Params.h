#pragma once

namespace ormel {

/// The params of a call that is sent without params.
struct NoParams {
  friend bool operator==(const NoParams&, const NoParams&) = default;
};

/// The params of a call that is sent with an empty object.
struct EmptyParams {
  friend bool operator==(const EmptyParams&, const EmptyParams&) = default;
};

}  // namespace ormel
