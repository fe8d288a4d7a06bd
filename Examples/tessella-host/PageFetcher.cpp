#include "PageFetcher.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <netinet/in.h>

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "Tool.h"

namespace tessella {

namespace {

constexpr long timeoutSeconds = 10;
constexpr std::size_t largestPage = std::size_t{4} * 1024 * 1024;  // bytes

template <auto function>
struct Releaser {
  template <typename Pointer>
  void operator()(Pointer* pointer) const noexcept {
    function(pointer);
  }
};
using Easy = std::unique_ptr<CURL, Releaser<curl_easy_cleanup>>;
using Address = std::unique_ptr<CURLU, Releaser<curl_url_cleanup>>;

struct Transfer {
  const std::stop_token& stop;
  std::string body;
  bool tooLarge = false;
};

std::string partOf(CURLU* address, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(address, part, &text, 0) != CURLUE_OK) return {};
  const std::unique_ptr<char, Releaser<curl_free>> owner(text);
  return text;
}

bool isLoopback(const std::string& host) {
  if (host == "localhost" || host == "[::1]") return true;
  std::array<unsigned char, 4> bytes;
  return inet_pton(AF_INET, host.c_str(), bytes.data()) == 1 && bytes[0] == 127;
}

Address localAddress(const std::string& url) {
  Address address(curl_url());
  if (!address) throw std::bad_alloc();
  if (curl_url_set(address.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK ||
      partOf(address.get(), CURLUPART_SCHEME) != "http" || !isLoopback(partOf(address.get(), CURLUPART_HOST))) {
    throw ToolFailure("Only http:// addresses of this machine can be opened.");
  }
  return address;
}

std::size_t receive(char* bytes, std::size_t size, std::size_t count, void* context) noexcept {
  auto& transfer = *static_cast<Transfer*>(context);
  transfer.tooLarge = transfer.body.size() + size * count > largestPage;
  if (transfer.tooLarge) return CURL_WRITEFUNC_ERROR;
  transfer.body.append(bytes, size * count);
  return size * count;
}

int stopIfAsked(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept {
  return static_cast<Transfer*>(context)->stop.stop_requested() ? 1 : 0;
}

void prepare(CURL* easy, CURLU* address, Transfer& transfer) {
  curl_easy_setopt(easy, CURLOPT_CURLU, address);
  curl_easy_setopt(easy, CURLOPT_PROXY, "");
  curl_easy_setopt(easy, CURLOPT_TIMEOUT, timeoutSeconds);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_USERAGENT, "tessella-host");
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, receive);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, stopIfAsked);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, &transfer);
}

void requireSuccess(CURL* easy, CURLcode code, const Transfer& transfer) {
  if (transfer.tooLarge) throw ToolFailure("The page is larger than 4 MiB.");
  if (code == CURLE_ABORTED_BY_CALLBACK) throw ToolFailure("The host is ending.");
  if (code != CURLE_OK) throw ToolFailure("The page cannot be opened: " + std::string(curl_easy_strerror(code)) + ".");
  long status = 0;
  curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
  if (status != 200) throw ToolFailure("The server answered with status " + std::to_string(status) + ".");
}

}  // namespace

FetchedPage fetchPage(const std::string& url, const std::stop_token& stop) {
  static std::once_flag libraryReady;
  std::call_once(libraryReady, curl_global_init, CURL_GLOBAL_DEFAULT);

  const auto address = localAddress(url);
  const Easy easy(curl_easy_init());
  if (!easy) throw std::bad_alloc();
  Transfer transfer{.stop = stop, .body = {}};
  prepare(easy.get(), address.get(), transfer);
  requireSuccess(easy.get(), curl_easy_perform(easy.get()), transfer);

  char* contentType = nullptr;
  curl_easy_getinfo(easy.get(), CURLINFO_CONTENT_TYPE, &contentType);
  return {.contentType = contentType ? contentType : "", .body = std::move(transfer.body)};
}

}  // namespace tessella
