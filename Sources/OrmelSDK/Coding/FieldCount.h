#pragma once

#include <cstddef>

namespace ormel::coding {

/// Compiles only if the type has exactly as many fields as its table has lines. A structured binding counts the fields
/// also of a type that declares a constructor.
template <typename Type, std::size_t linesInTable>
void tableListsEveryField([[maybe_unused]] const Type& value) {
  static_assert(linesInTable <= 32, "a table has at most 32 lines");
  if constexpr (linesInTable == 1) {
    [[maybe_unused]] const auto& [f1] = value;
  } else if constexpr (linesInTable == 2) {
    [[maybe_unused]] const auto& [f1, f2] = value;
  } else if constexpr (linesInTable == 3) {
    [[maybe_unused]] const auto& [f1, f2, f3] = value;
  } else if constexpr (linesInTable == 4) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4] = value;
  } else if constexpr (linesInTable == 5) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5] = value;
  } else if constexpr (linesInTable == 6) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6] = value;
  } else if constexpr (linesInTable == 7) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7] = value;
  } else if constexpr (linesInTable == 8) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8] = value;
  } else if constexpr (linesInTable == 9) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9] = value;
  } else if constexpr (linesInTable == 10) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10] = value;
  } else if constexpr (linesInTable == 11) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11] = value;
  } else if constexpr (linesInTable == 12) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12] = value;
  } else if constexpr (linesInTable == 13) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13] = value;
  } else if constexpr (linesInTable == 14) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14] = value;
  } else if constexpr (linesInTable == 15) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15] = value;
  } else if constexpr (linesInTable == 16) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16] = value;
  } else if constexpr (linesInTable == 17) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17] = value;
  } else if constexpr (linesInTable == 18) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18] =
        value;
  } else if constexpr (linesInTable == 19) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18,
                                  f19] = value;
  } else if constexpr (linesInTable == 20) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20] = value;
  } else if constexpr (linesInTable == 21) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21] = value;
  } else if constexpr (linesInTable == 22) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22] = value;
  } else if constexpr (linesInTable == 23) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23] = value;
  } else if constexpr (linesInTable == 24) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24] = value;
  } else if constexpr (linesInTable == 25) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25] = value;
  } else if constexpr (linesInTable == 26) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25, f26] = value;
  } else if constexpr (linesInTable == 27) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25, f26, f27] = value;
  } else if constexpr (linesInTable == 28) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25, f26, f27, f28] = value;
  } else if constexpr (linesInTable == 29) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25, f26, f27, f28, f29] = value;
  } else if constexpr (linesInTable == 30) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25, f26, f27, f28, f29, f30] = value;
  } else if constexpr (linesInTable == 31) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25, f26, f27, f28, f29, f30, f31] = value;
  } else if constexpr (linesInTable == 32) {
    [[maybe_unused]] const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19,
                                  f20, f21, f22, f23, f24, f25, f26, f27, f28, f29, f30, f31, f32] = value;
  }
}

}  // namespace ormel::coding
