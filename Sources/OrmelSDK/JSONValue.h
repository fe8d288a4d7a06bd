#pragma once

// The short way to the JSON value, which applications name most.
#include "OrmelSDK/JSON/JSONValue.h"
