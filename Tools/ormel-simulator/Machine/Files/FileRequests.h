#pragma once

#include "ormel-simulator/Machine/Files/FileRoot.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Reading, writing, listing and telling about files.
void addFileRequests(RequestTable& table, FileRoot& root);

}  // namespace ormel::simulator
