#pragma once

/// Marks a class whose objects are thrown: its type information is one and the same in the library and in the
/// application, also where the application is compiled with hidden visibility. Everything else needs no mark;
/// cmake/exports.map says what the shared library lets out.
#define ORMEL_EXPORT __attribute__((visibility("default")))
