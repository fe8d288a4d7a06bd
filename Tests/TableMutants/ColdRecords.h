#pragma once

// Included ahead of every family: records that stream in are read by the loop that reads all others, so that their
// tables can be changed while the program runs.

#include "OrmelSDK/Coding/RecordCodec.h"

#undef ORMEL_DEFINE_HOT_RECORD
#define ORMEL_DEFINE_HOT_RECORD(Record) ORMEL_DEFINE_RECORD(Record)
