#pragma once

#include <cstddef>
#include <string>

namespace ormel::benchmarks {

/// A typical streaming notification: 253 bytes.
inline std::string notificationLine() {
  return R"({"method":"item/agentMessage/delta","params":{"threadId":"0199a213-81c0-7800-8aa1-bbab2a035a53",)"
         R"("turnId":"0199a213-8243-7a51-9c2d-6b6f3c1d8e4f","itemId":"msg_0c5e9f",)"
         R"("delta":"The quick brown fox \"jumps\" on","sequence":1742,"final":false,"usage":null}})";
}

/// About `size` bytes of nested small objects, like a list of threads.
inline std::string nestedObjects(std::size_t size) {
  std::string text = R"({"data":[)";
  for (int id = 0; text.size() < size; ++id) {
    if (id > 0) text += ',';
    const std::string number = std::to_string(id);
    text += R"({"id":"thread-)" + number + R"(","preview":"Fix the flaky test","createdAt":)" +
            std::to_string(1700000000 + id) + R"(,"ratio":0.)" + number +
            R"(,"archived":false,"git":{"sha":null,"branch":"main","origin":{"url":"ssh://host/path","ok":true}},)"
            R"("turns":[{"id":"t1","status":"completed","items":[]},{"id":"t2","status":"failed","items":[1,2,3]}]})";
  }
  return text + "]}";
}

/// A JSON text of one string with about `size` bytes, with a line feed escape every 80 bytes.
inline std::string longString(std::size_t size) {
  std::string text = "\"";
  while (text.size() < size) text += std::string(78, 'x') + "\\n";
  return text + '"';
}

}  // namespace ormel::benchmarks
