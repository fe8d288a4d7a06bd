#include "ormel-simulator/Machine/Files/FileTask.h"

#include <system_error>

#include "ormel-simulator/Requests/Refusal.h"

namespace ormel::simulator {

void FileTask::fail(const std::string& reason) const {
  throw Refusal(invalidRequest, "cannot " + verb_ + " " + path_ + ": " + reason);
}

void FileTask::failBy(int error) const { fail(std::generic_category().message(error)); }

}  // namespace ormel::simulator
