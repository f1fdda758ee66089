#include "check/library_rules.h"

#include <unistd.h>

#include <map>
#include <set>
#include <string>
#include <tuple>

#include "check/method_rules.h"
#include "library_tables.h"
#include "runner/description_rules.h"
#include "runner/entry_api.h"
#include "runner/method_lookup.h"
#include "runner/table_lookup.h"
#include "service_rights.h"
#include "util/json_scan.h"
#include "util/json_text.h"

namespace ORBO::tool {
namespace {

using Entry = DescriptionFile::Entry;

// An entry that names a library.
struct Use {
  const DescribedFile* file;
  const Entry* entry;
};

bool IsInRange(const Entry& entry, int version) {
  Json::Value info;
  return JSON::Parse(entry.text, info, JSON::Comments::kAllowed) && IsInVersionRange(info, version);
}

std::string CallText(const TableRow& row) {
  return row.api + " " + std::to_string(row.version) + " " + row.method;
}

// The judgement of one library, which opens.
class TableCheck {
 public:
  TableCheck(std::string name, const std::vector<Use>& uses, const LibraryTables& tables,
             Findings& findings)
      : name_(std::move(name)),
        uses_(uses),
        tables_(tables),
        table_(ToMethodTable(tables)),
        place_(uses.front().file->At(*uses.front().entry, "lib")),
        findings_(findings) {}

  void Run(bool are_all) {
    for (const Use& use : uses_) {
      CheckDescribed(use);
    }
    CheckRows(are_all);
    for (const TableRow& row : tables_.checks) {
      if (!HasHandler(row)) {
        findings_.Warn(place_, "the check table of " + name_ + " has " + CallText(row) +
                                   ", and the method table has not");
      }
    }
    if (tables_.has_null_checks) {
      findings_.Warn(place_, "GetAPICheckTable of " + name_ + " gives no table");
    }
  }

 private:
  bool HasHandler(const TableRow& call) const {
    return FindHandler(table_.data(), {call.api, call.version, call.method}) != nullptr;
  }
  void CheckDescribed(const Use& use);
  void CheckRows(bool are_all);
  void CheckRow(const TableRow& row, bool are_all);

  const std::string name_;
  const std::vector<Use>& uses_;
  const LibraryTables& tables_;
  const std::vector<_tag_API_TABLE> table_;
  const Place place_;
  Findings& findings_;
};

// Methods that are described and have no handler.
void TableCheck::CheckDescribed(const Use& use) {
  Json::Value info;
  if (!JSON::Parse(use.entry->text, info, JSON::Comments::kAllowed)) {
    return;
  }
  for (const ListedMethod& method : ListedMethods(*use.entry)) {
    const TableRow call{use.entry->api, method.version, method.name, true};
    if (!method.name.empty() && IsInVersionRange(info, method.version) && !HasHandler(call)) {
      findings_.Error(use.file->source().At(method.text),
                      "the table of " + name_ + " has no handler for " + CallText(call));
    }
  }
}

void TableCheck::CheckRows(bool are_all) {
  std::set<std::tuple<std::string, int, std::string>> seen;
  for (const TableRow& row : tables_.methods) {
    if (!seen.insert({row.api, row.version, row.method}).second) {
      findings_.Warn(place_, "the table of " + name_ + " has " + CallText(row) +
                                 " twice; the second is never called");
    } else {
      CheckRow(row, are_all);
    }
  }
}

// A row that no call can reach.
void TableCheck::CheckRow(const TableRow& row, bool are_all) {
  bool is_known = false;
  for (const auto& [file, entry] : uses_) {
    if (entry->api != row.api) {
      continue;
    }
    is_known = true;
    if (!IsInRange(*entry, row.version) || !IsMethodListed(*entry, row.version, row.method)) {
      findings_.Warn(file->At(*entry, "methods"), "the table of " + name_ + " has " +
                                                      CallText(row) + ", which is not described");
    }
  }
  if (!is_known && are_all) {
    findings_.Warn(place_, "the table of " + name_ + " has " + CallText(row) +
                               ", which no description gives to it");
  }
}

std::string Hint(const std::string& library) {
  return library.find('/') == std::string::npos && access(library.c_str(), F_OK) == 0
             ? "; a name without \"/\" is looked for in the system's directories alone"
             : "";
}

}  // namespace

std::size_t CheckLibraries(const std::vector<std::unique_ptr<DescribedFile>>& files, bool are_all,
                           int seconds, PathCheck& paths, Findings& findings) {
  std::map<std::string, std::vector<Use>> libraries;
  for (const auto& file : files) {
    for (const Entry& entry : file->entries()) {
      if (IsValidDescription(entry) && entry.api != kEntryAPI) {
        libraries[JSON::DecodeString(entry.Find("lib"))].push_back({file.get(), &entry});
      }
    }
  }
  for (const auto& [name, uses] : libraries) {
    const Place place = uses.front().file->At(*uses.front().entry, "lib");
    const bool is_safe = name.find('/') == std::string::npos || paths.Check(name);
    if (!is_safe && OpensAsRoot()) {
      findings.Warn(place,
                    "the library is not opened: others may change it, and it would run with "
                    "root's rights");
      continue;
    }
    const LibraryTables tables = ReadLibraryTables(name, seconds);
    if (!tables.fault.empty()) {
      findings.Error(place, tables.fault + Hint(name));
      continue;
    }
    if (!tables.unbound.empty()) {
      findings.Error(place, "a call of what is missing ends the process: " + tables.unbound);
    }
    TableCheck(name, uses, tables, findings).Run(are_all);
  }
  return libraries.size();
}

}  // namespace ORBO::tool
