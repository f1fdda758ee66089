#include "library_tables.h"

#include <dlfcn.h>
#include <json/value.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include <webapi/APIRunner.h>

#include "run_apart.h"
#include "runner/library_file.h"
#include "service_rights.h"
#include "util/json_text.h"
#include "util/json_types.h"
#include "util/write_file.h"

namespace ORBO::tool {
namespace {

// --- In the process that opens the library ---

// How far it got, as letters before the report.
constexpr char kOpening = 'o';
constexpr char kReading = 'r';

Json::Value Text(const char* text) { return Json::Value(text == nullptr ? "" : text); }

template <typename Row>
Json::Value Rows(const Row* row, bool (*has_function)(const Row&)) {
  Json::Value rows(Json::arrayValue);
  for (; row->api != nullptr; ++row) {
    Json::Value& entry = rows.append(Json::Value(Json::objectValue));
    entry["api"] = Text(row->api);
    entry["version"] = row->version;
    entry["method"] = Text(row->method);
    entry["function"] = row->method != nullptr && has_function(*row);
  }
  return rows;
}

// Opens the library as the runner does.  What is missing of functions shows where all
// of them are looked up at once.
void* Open(const std::string& path, Json::Value& report) {
  const LibraryFile whole = OpenLibraryFile(path, RTLD_NOW);
  if (whole.handle != nullptr) {
    return whole.handle;
  }
  const LibraryFile lazy = whole.is_half_made ? whole : OpenLibraryFile(path, RTLD_LAZY);
  if (lazy.handle != nullptr) {
    report["unbound"] = whole.error;
  } else {
    report["fault"] = "the library cannot be opened: " + lazy.error;
  }
  return lazy.handle;
}

void Describe(const std::string& path, int output, Json::Value& report) {
  WriteAll(output, std::string(1, kOpening));
  void* const handle = Open(path, report);
  if (handle == nullptr) {
    return;
  }
  WriteAll(output, std::string(1, kReading));
  if (dlsym(handle, "GetAPITable") == nullptr) {
    report["fault"] = "the library has no GetAPITable";
    return;
  }
  APIRunner runner;
  _tag_API_TABLE* methods = nullptr;
  _tag_API_CHECK_TABLE* checks = nullptr;
  report["null_checks"] = !runner.GetCheckTableFunc(handle, &checks);
  if (!runner.GetTableFunc(handle, &methods)) {
    report["fault"] = "GetAPITable gives no table";
    return;
  }
  report["methods"] =
      Rows<_tag_API_TABLE>(methods, [](const auto& row) { return row.handler != nullptr; });
  if (checks != nullptr) {
    report["checks"] =
        Rows<_tag_API_CHECK_TABLE>(checks, [](const auto& row) { return row.check != nullptr; });
    const auto rows = static_cast<std::ptrdiff_t>(report["checks"].size());
    report["fallback"] = checks[rows].check != nullptr;
  }
}

void Report(const std::string& path, int output) {
  TakeServiceRights();
  Json::Value report(Json::objectValue);
  Describe(path, output, report);
  WriteAll(output, JSON::ToText(report) + "\n");
}

// --- In this process ---

std::vector<TableRow> ToRows(const Json::Value& list) {
  std::vector<TableRow> rows;
  for (const Json::Value& row : list) {
    rows.push_back({JSON::AsString(row["api"]), JSON::AsInt(row["version"]),
                    JSON::AsString(row["method"]), JSON::AsBool(row["function"])});
  }
  return rows;
}

// How a process without a report ended.
std::string FailureText(const ApartResult& result, int seconds) {
  const std::string when = !result.output.empty() && result.output.back() == kReading
                               ? " while its tables were read"
                               : " while it was opened";
  if (!result.in_time) {
    return "the library took more than " + std::to_string(seconds) + " s" + when;
  }
  if (WIFSIGNALED(result.status)) {
    return "the library crashed" + when + ": " + strsignal(WTERMSIG(result.status));
  }
  return "the library ended the process" + when + ", with status " +
         std::to_string(WEXITSTATUS(result.status));
}

void NoHandler(APIRequest* /*request*/, APIResponse* /*response*/) {}
bool NoCheck(APIRequest* /*request*/, APIResponse* /*response*/) { return true; }

}  // namespace

LibraryTables ReadLibraryTables(const std::string& path, int seconds) {
  const ApartResult result = RunApart(seconds, [&path](int output) { Report(path, output); });
  const std::size_t begin = result.output.find('{');
  Json::Value report;
  LibraryTables tables;
  if (begin == std::string::npos || !JSON::Parse(result.output.substr(begin), report)) {
    tables.fault = FailureText(result, seconds);
    return tables;
  }
  tables.fault = JSON::AsString(report["fault"]);
  tables.unbound = JSON::AsString(report["unbound"]);
  tables.methods = ToRows(report["methods"]);
  tables.checks = ToRows(report["checks"]);
  tables.has_fallback = JSON::AsBool(report["fallback"]);
  tables.has_null_checks = JSON::AsBool(report["null_checks"]);
  return tables;
}

std::vector<_tag_API_TABLE> ToMethodTable(const LibraryTables& tables) {
  std::vector<_tag_API_TABLE> table;
  for (const TableRow& row : tables.methods) {
    table.push_back(
        {row.api.c_str(), row.version, row.method.c_str(), row.has_function ? NoHandler : nullptr});
  }
  table.push_back({nullptr, 0, nullptr, nullptr});
  return table;
}

std::vector<_tag_API_CHECK_TABLE> ToCheckTable(const LibraryTables& tables) {
  std::vector<_tag_API_CHECK_TABLE> table;
  for (const TableRow& row : tables.checks) {
    table.push_back({row.api.c_str(), row.version, row.method.c_str(),
                     row.has_function ? NoCheck : nullptr, nullptr, nullptr});
  }
  table.push_back({nullptr, 0, nullptr, tables.has_fallback ? NoCheck : nullptr, nullptr, nullptr});
  return table;
}

}  // namespace ORBO::tool
