#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "FormQuestion.h"
#include "OrmelSDK/Ormel.h"
#include "OrmelSDK/Records/ThreadRecords.h"

namespace ormel::chat {

/// The conversations that the server keeps, those first in which something happened last.
Task<std::vector<OrmelThreadRecord>> keptThreads(Ormel ormel);

/// One line: id, title and age.
std::string threadLine(const OrmelThreadRecord& thread);

/// Has one of the conversations chosen, by its number or its id. Without a choice, the receiver is not called.
std::shared_ptr<Question> threadQuestion(const std::vector<OrmelThreadRecord>& threads,
                                         std::function<void(const std::string& id)> chosen);

/// Prints the conversations, with `json` as one record a line. Gives the status to exit with; does not fail.
int printThreads(const Ormel& ormel, bool json);

}  // namespace ormel::chat
