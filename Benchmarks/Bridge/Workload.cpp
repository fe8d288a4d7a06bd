#include "Workload.h"

namespace ormel::benchmarks {

std::string singleText(std::size_t size) { return '"' + std::string(size - 2, 'x') + '"'; }

std::string pageContent(std::size_t size) {
  std::string content;
  content.reserve(size + 256);
  for (int reference = 0; content.size() + 1 < size; ++reference) {
    content.append(content.empty() ? "[" : ",");
    content.append(R"({"role":"link","ref":)").append(std::to_string(reference));
    content.append(R"(,"name":"The quick brown fox says \"hello\" to the lazy dog in the café","visible":true,)");
    content.append(R"("url":"https://example.invalid/articles/2031/a-rather-long-and-readable-address"})");
  }
  return content.append("]");
}

std::string replyHead(long id) { return R"({"id":)" + std::to_string(id) + R"(,"result":)"; }

}  // namespace ormel::benchmarks
