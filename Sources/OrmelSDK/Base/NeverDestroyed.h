#pragma once

#include <utility>

namespace ormel::detail {

/// An object that lives until the process has ended: code of the application may still run, and use it, while static
/// objects are destroyed. Meant for `const T& name = neverDestroyed<T>(...)`.
template <typename T, typename... Args>
const T& neverDestroyed(Args&&... args) {
  return *new T(std::forward<Args>(args)...);
}

}  // namespace ormel::detail
