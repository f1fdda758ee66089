#include <json/value.h>

#include <string>

#include "Arguments.h"
#include "check/check_path.h"
#include "output.h"
#include "positive_number.h"
#include "printable.h"
#include "util/paths.h"

namespace ORBO::tool {
namespace {

constexpr char kDefaultSeconds[] = "10";

constexpr Option kOptions[] = {
    {"strict", nullptr, "count warnings as errors"},
    {"no-libraries", nullptr, "leave the handler libraries unopened"},
    {"seconds", "N", "how long opening a library may take (default: 10)"},
    kJsonOption,
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "Without operands the web-API directory is checked as the loader sees it: every *.lib,\n"
    "lib.def, which file hides which, the handler libraries and who may change all this.\n"
    "A directory is checked alike; of a file, only that, with the lib.def beside it.\n"
    "\n"
    "An error is refused by the loader, ends in an error code, or has another effect than\n"
    "it seems to have.  A warning works and is worth a look.  Libraries are opened in a\n"
    "process of their own, which runs their constructors.\n"
    "\n"
    "Exit codes: 0 without errors, 1 with errors (--strict: or warnings), 2 wrong usage.\n"
    "\n"
    "Examples:\n"
    "  webapi check\n"
    "  webapi check --strict ORBO.Demo.lib\n"
    "  webapi check --no-libraries examples/webapi data\n";

Json::Value ToJson(const Finding& finding) {
  Json::Value value(Json::objectValue);
  value["file"] = finding.place.file;
  value["line"] = Json::UInt64{finding.place.line};
  value["column"] = Json::UInt64{finding.place.column};
  value["severity"] = SeverityName(finding.severity);
  value["text"] = finding.text;
  return value;
}

std::string Counted(std::size_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string Summary(const CheckCounts& counts, const Findings& findings) {
  return Counted(counts.files, "file", "files") + ", " + Counted(counts.apis, "API", "APIs") +
         ", " + Counted(counts.libraries, "library", "libraries") + ": " +
         Counted(findings.Count(Severity::kError), "error", "errors") + ", " +
         Counted(findings.Count(Severity::kWarning), "warning", "warnings") + "\n";
}

bool PrintFindings(const Findings& findings, const CheckCounts& counts, bool as_json) {
  Json::Value list(Json::arrayValue);
  std::string text;
  for (const Finding& finding : findings.Sorted()) {
    list.append(ToJson(finding));
    text += Printable(PlaceText(finding.place) + ": " + SeverityName(finding.severity) + ": " +
                      finding.text) +
            "\n";
  }
  return as_json ? PrintJson(list) == kDone : Print(text + Summary(counts, findings));
}

ExitCode Run(const Arguments& arguments) {
  const std::string seconds = arguments.Value("seconds", kDefaultSeconds);
  CheckOptions options{!arguments.Has("no-libraries"), 0};
  if (!ReadPositiveNumber(seconds, options.seconds) || options.seconds > 3600) {
    return ComplainOfUsage("not a number of seconds up to an hour: " + seconds);
  }
  Findings findings;
  PathCheck paths(findings);
  CheckCounts counts;
  for (const std::string& path : arguments.operands()) {
    CheckPath(path, options, paths, counts, findings);
  }
  if (arguments.operands().empty()) {
    CheckPath(RootedPath(kWebAPIDirectory), options, paths, counts, findings);
  }
  const bool is_clean = findings.Count(Severity::kError) == 0 &&
                        (!arguments.Has("strict") || findings.Count(Severity::kWarning) == 0);
  return PrintFindings(findings, counts, arguments.Has("json")) && is_clean ? kDone : kFailed;
}

}  // namespace

const Command kCheck = {"check",
                        "Finds faults in descriptions and handler libraries",
                        "[FILE or DIRECTORY...]",
                        0,
                        kAnyNumber,
                        kOptions,
                        kDetails,
                        Run,
                        nullptr};

}  // namespace ORBO::tool
