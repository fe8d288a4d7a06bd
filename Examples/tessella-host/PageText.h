#pragma once

#include <string>

#include "PageFetcher.h"

namespace tessella {

/// What a reader sees of a page.
struct PageText {
  std::string title;
  /// One block a line, white space collapsed.
  std::string text;
};

/// Reads an HTML or plain-text page, however broken its markup. Fails with `ToolFailure` for any other content.
PageText readPage(const FetchedPage& page);

}  // namespace tessella
