#pragma once

#include "ormel-simulator/Machine/Files/FileRoot.h"
#include "ormel-simulator/Requests/RequestTable.h"

namespace ormel::simulator {

/// Removing and copying files, and folders with all that is in them.
void addTreeRequests(RequestTable& table, FileRoot& root);

}  // namespace ormel::simulator
