#pragma once
// The ODBC connector: copies every table of an external data source into the
// console's database, each as PREFIX_TABLE, so that queries can join them
// with the system tables. The copy is a snapshot taken when attaching;
// attaching again refreshes it.
#include <string>
#include <vector>

#include "base/sql/database.h"

namespace kobubase {

// source: a data source name configured for the driver manager (odbc.ini),
// or a connection string such as "DRIVER=/path/driver.so;Database=file.db"
// (anything with an '='). prefix: a plain name (letters, digits, '_').
// Fills messages with one line per table copied, or the reason it failed
// (with the driver manager's own message); false when nothing was copied.
bool attachOdbc(clsDatabase& db, const std::string& source, const std::string& prefix,
                std::vector<std::string>& messages);

}  // namespace kobubase
