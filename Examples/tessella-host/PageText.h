#pragma once

#include <string>

#include "PageFetcher.h"

namespace tessella {

/// The part of a page that a reader sees.
struct PageText {
  std::string title;
  /// One block a line, white space collapsed.
  std::string text;
};

/// Reads an HTML or plain-text page, however broken its markup. Fails with `ToolFailure` for any other content.
PageText readPage(const FetchedPage& page);

}  // namespace tessella
