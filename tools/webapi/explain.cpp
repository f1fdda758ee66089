#include <json/value.h>

#include <cerrno>
#include <string>

#include "Arguments.h"
#include "Table.h"
#include "described_apis.h"
#include "error_meaning.h"
#include "explain/call_trace.h"
#include "output.h"
#include "platform/linux/address.h"
#include "platform/linux/password_check.h"
#include "positive_number.h"
#include "util/WorkingDirectoryGuard.h"
#include "util/paths.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {
    {"version", "N", "the API's version (default: the highest that there is)"},
    {"user", "NAME", "the user who has logged in (default: nobody)"},
    {"address", "IP", "the client's address, for application privileges"},
    {"upload", nullptr, "the call sends files"},
    kJsonOption,
    kNoMoreOptions,
};

constexpr char kDetails[] =
    "\n"
    "Each line is a step of the CGI program, up to the one that refuses the call, with the\n"
    "file and line of the rule.  The handler is not called.  A user's session, or a token\n"
    "for the method, is taken for granted: \"webapi session show\" and \"token list\" tell\n"
    "about those.  \"depends\" is a step whose answer lies in the request.\n"
    "\n"
    "Exit codes: 0 when the call is served, 1 when it is refused, 2 wrong usage.\n"
    "\n"
    "Examples:\n"
    "  webapi explain ORBO.Session list --user ben\n"
    "  webapi explain ORBO.Demo get --version 2 --address 192.0.2.7 --user 'DOM\\ada'\n";

const char* ResultName(StepResult result) {
  switch (result) {
    case StepResult::kPasses:
      return "passes";
    case StepResult::kRefuses:
      return "refuses";
    case StepResult::kIgnored:
      return "ignored";
    case StepResult::kDepends:
      break;
  }
  return "depends";
}

Json::Value ToJson(const Trace& trace) {
  Json::Value value(Json::objectValue);
  value["served"] = trace.code == 0;
  value["code"] = trace.code;
  Json::Value& steps = value["steps"] = Json::Value(Json::arrayValue);
  for (const Step& step : trace.steps) {
    Json::Value& entry = steps.append(Json::Value(Json::objectValue));
    entry["step"] = step.name;
    entry["result"] = ResultName(step.result);
    entry["code"] = step.code;
    entry["reason"] = step.reason;
  }
  return value;
}

std::string Verdict(const Trace& trace) {
  if (trace.code != 0) {
    return "The call is refused with error " + std::to_string(trace.code) + ": " +
           ErrorMeaning(trace.code) + ".\n";
  }
  std::string text = "The call is served";
  for (const Step& step : trace.steps) {
    text += step.result == StepResult::kDepends ? ", unless the " + step.name + " refuses it" : "";
  }
  return text + ".\n";
}

std::string ToText(const Trace& trace) {
  Table table({"STEP", "RESULT", "CODE", "REASON"});
  for (const Step& step : trace.steps) {
    table.Add({step.name, ResultName(step.result), step.code != 0 ? std::to_string(step.code) : "",
               step.reason});
  }
  return table.ToText(HasColours()) + Verdict(trace);
}

// Fills `call`.  False, and the reason in `complaint`, if an argument is wrong.
bool ReadCall(const Arguments& arguments, AskedCall& call, std::string& complaint) {
  Address address{};
  const std::string version = arguments.Value("version", "1");
  if (!ReadPositiveNumber(version, call.version)) {
    complaint = "not a version: " + version;
  } else if (!call.user.empty() && !IsUserName(call.user)) {
    complaint = "not a user name: " + call.user;
  } else if (!call.address.empty() && !ParseAddress(call.address, address)) {
    complaint = "not an IP address: " + call.address;
  }
  return complaint.empty();
}

ExitCode Run(const Arguments& arguments) {
  AskedCall call{arguments.operands()[0],        1,
                 arguments.operands()[1],        arguments.Value("user", ""),
                 arguments.Value("address", ""), arguments.Has("upload")};
  std::string complaint;
  if (!ReadCall(arguments, call, complaint)) {
    return ComplainOfUsage(complaint);
  }
  Json::Value apis;
  if (!LoadDescribedAPI(call.api, apis)) {
    return kFailed;
  }
  if (!arguments.Has("version")) {
    call.version = HighestVersion(call.api, apis);
  }
  const std::string path = RootedPath(kWebAPIDirectory);
  const WorkingDirectoryGuard directory(path);
  if (!directory.IsEntered()) {
    return ComplainOfFailure("enter " + path, errno);
  }
  const Trace trace = TraceCall(call);
  const bool is_printed =
      arguments.Has("json") ? PrintJson(ToJson(trace)) == kDone : Print(ToText(trace));
  return is_printed && trace.code == 0 ? kDone : kFailed;
}

}  // namespace

const Command kExplain = {"explain",
                          "Says step by step whether a call would be served, and what refuses it",
                          "API METHOD",
                          2,
                          2,
                          kOptions,
                          kDetails,
                          Run,
                          nullptr};

}  // namespace ORBO::tool
