#pragma once

// Stands for a release of simdjson that the library has not seen: another version, and no such internals.

#include ORMEL_PACKAGED_SIMDJSON

#define SIMDJSON_VERSION_MINOR SIMDJSON_VERSION_MAJOR
#define stage1_mode no_such_internal
#define stage1 no_such_internal
#define stage2 no_such_internal
#define structural_indexes no_such_internal
#define n_structural_indexes no_such_internal
#define string_buf no_such_internal
#define tape no_such_internal
