#pragma once

// g++ says it by a name of its own, clang by a feature.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORMEL_IS_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ORMEL_IS_SANITIZED
#endif
#endif

namespace ormel::testing {

/// Whether a sanitizer watches, under which a program takes several times as long.
#if defined(ORMEL_IS_SANITIZED)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

}  // namespace ormel::testing

#undef ORMEL_IS_SANITIZED
