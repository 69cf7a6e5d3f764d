#pragma once
// A live table is read in place from the program's own data at every query,
// through SQLite's virtual-table interface: nothing is copied, so a table of
// millions of rows costs one scan and always shows the data as it is now.
// Queries may read it but never change it.
#include <cstddef>

#include "base/sql/database.h"

namespace kobubase {

class clsLiveTable {
 public:
  virtual ~clsLiveTable() = default;
  virtual std::size_t rowCount() const = 0;
  // The cell of a row below rowCount() in a column of the declared list.
  virtual SqlCell cell(std::size_t row, int column) const = 0;
};

}  // namespace kobubase
