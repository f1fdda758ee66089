#pragma once

#include <string>
#include <vector>

#include <webapi/APITable.h>

namespace ORBO::tool {

// A row of one of a handler library's tables.
struct TableRow {
  std::string api;
  int version;
  std::string method;
  bool has_function;
};

// What a handler library is like, seen from outside.
struct LibraryTables {
  // Why no call can be served through it; "" if calls can.
  std::string fault;
  // The loader's words about a function that is nowhere: a call of it ends the process.
  std::string unbound;
  std::vector<TableRow> methods;
  std::vector<TableRow> checks;
  bool has_fallback = false;     // the end of the check table has a function
  bool has_null_checks = false;  // there is a function for the check table, and no table
};

// Opens the handler library `path`, as a description names it, and reads its tables, as
// the runner does, in a process of its own, which is ended after `seconds`: a library
// may crash, hang or end the process.  Run by root it takes the rights of the user
// whom the CGI programs run as, where platform.conf names one.
LibraryTables ReadLibraryTables(const std::string& path, int seconds);

// The rows as the tables that they came from, for the runner's own look-up.  The texts
// are those of `tables`; the functions stand for others.
std::vector<_tag_API_TABLE> ToMethodTable(const LibraryTables& tables);
std::vector<_tag_API_CHECK_TABLE> ToCheckTable(const LibraryTables& tables);

}  // namespace ORBO::tool
