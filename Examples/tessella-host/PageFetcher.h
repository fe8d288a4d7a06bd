#pragma once

#include <stop_token>
#include <string>

namespace tessella {

/// A page as it came from its server.
struct FetchedPage {
  /// The whole header, such as "text/html; charset=utf-8"; empty if there was none.
  std::string contentType;
  std::string body;
};

/// Gets a page of a server on this machine: http:// to a loopback address and nothing else. An agent must not be
/// able to reach the user's network through us, so redirects are not followed and no proxy is asked.
///
/// Blocks until the page is there, for 10 seconds at most, or until `stop` is requested. Fails with `ToolFailure`.
FetchedPage fetchPage(const std::string& url, const std::stop_token& stop);

}  // namespace tessella
