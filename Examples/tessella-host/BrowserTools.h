#pragma once

#include <vector>

#include "Tool.h"

namespace tessella {

/// The tools of this host. A real one would drive its browser here.
std::vector<Tool> browserTools();

}  // namespace tessella
