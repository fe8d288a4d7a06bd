#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <string>

#include "OrmelSDK/Platform/FreedMemory.h"
#include "TessellaBrowserMCP/Bridge.h"
#include "TessellaBrowserMCP/DescriptorIO.h"

int main() {
  ormel::detail::keepFreedMemory();
  try {
    ormel::runBridge();
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    const std::string line = std::string("Tessella browser MCP bridge: ") + error.what() + "\n";
    ormel::detail::writeAllWaiting(STDERR_FILENO, line);
    return EXIT_FAILURE;
  }
}
