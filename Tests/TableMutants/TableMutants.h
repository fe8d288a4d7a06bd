#pragma once

// The tables of the records, words and variants, with one row changed at a time. The tables are plain data that the
// library's own loops read; the linker puts `MutatedTables.cpp` between them and the families, so that a changed copy
// of a table takes the place of the original.

#include <functional>
#include <string>
#include <vector>

namespace ormel::tests {

struct TableMutant {
  /// The type whose table it is.
  std::string type;
  /// A description of the change.
  std::string what;
  /// The field's first key, if the change shows only in a value that can be empty.
  std::string emptyField;
  /// The first word of a variant's case, if the change shows only in the type that the case writes.
  std::string writtenCase;
  /// Puts the changed table in the place of the original.
  std::function<void()> activate;
};

/// Remembers each table that is used from now on.
void collectTables();

/// A mutant for each change of each row of the tables that were collected.
std::vector<TableMutant> tableMutants();

/// Puts the original back.
void deactivateMutant();

}  // namespace ormel::tests
