#pragma once

#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// The search for files whose path fits a few characters.
void addFileSearchRequest(RequestTable& table);

}  // namespace ormel::simulator
