#pragma once

#include <cstddef>
#include <string>

namespace ormel::benchmarks {

/// One JSON text of `size` bytes: a single string, as a screenshot is.
std::string singleText(std::size_t size);

/// One JSON text of at least `size` bytes: an array of objects with short texts, as the content of a page is.
std::string pageContent(std::size_t size);

/// The text of a reply ahead of its result and behind it.
std::string replyHead(long id);
inline constexpr char replyTail = '}';

}  // namespace ormel::benchmarks
