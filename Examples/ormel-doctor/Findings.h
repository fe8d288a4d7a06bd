#pragma once

#include "OrmelSDK/Diagnosis.h"
#include "ormel-control/Report.h"

namespace ormel::doctor {

/// The diagnosis for people and for programs. Its exit status is 0 for a usable server, else 1.
control::Report findings(const Diagnosis& diagnosis);

}  // namespace ormel::doctor
