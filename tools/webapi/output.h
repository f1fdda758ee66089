#pragma once

#include <json/value.h>

#include <string>

#include "Command.h"

// What the commands print.
namespace ORBO::tool {

// Prints `text` to the standard output and makes sure that it got there.  False,
// after a complaint, if it did not.
bool Print(const std::string& text);
// Prints a JSON document on one line.
ExitCode PrintJson(const Json::Value& value);

// Prints "webapi: `text`" to the standard error, with control characters replaced.
void Complain(const std::string& text);
// Complains about the command line.
ExitCode ComplainOfUsage(const std::string& text);
enum class MayRun { kServiceUser, kRootOnly };

// Complains that `action` ("open the session") failed with `error` of errno.h, and
// tells who may do it if that is the reason: root, or also the user that the CGI
// programs run as.
ExitCode ComplainOfFailure(const std::string& action, int error,
                           MayRun may_run = MayRun::kServiceUser);

// False, after a complaint with `action`, if this process may not read the
// directory `path`.  A missing one is as good as an empty one.
bool MayRead(const std::string& path, const std::string& action);

// Whether the standard output takes colours: a terminal, and no NO_COLOR in the
// environment.
bool HasColours();

}  // namespace ORBO::tool
