#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <string>

#include "TessellaBrowserMCP/Bridge.h"
#include "TessellaBrowserMCP/DescriptorIO.h"

int main() {
  try {
    ormel::runBridge();
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    const std::string line = std::string("Tessella browser MCP bridge: ") + error.what() + "\n";
    ormel::detail::writeAllWaiting(STDERR_FILENO, line);
    return EXIT_FAILURE;
  }
}
