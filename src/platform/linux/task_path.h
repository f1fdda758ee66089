#pragma once

#include <string>
#include <string_view>

namespace ORBO {

// Where the records of background tasks lie: /run/orbo/tasks/<owner>/<id>.json, with
// the two names encoded, since they come from clients too.  Letters, digits, "-" and
// "_" stand for themselves, every other byte is "%" and two upper-case hex digits:
// no name is a path or begins with a dot, and no two names share a file.

// The directory of all owners.
std::string TaskRootDirectory();

// The directory of the owner's records, or "" if none can have that name: it is
// null, empty or too long.
std::string TaskDirectory(const char* owner);

// The owner whose directory is `name`; "" if that is nobody's.
std::string TaskOwnerOfDirectory(const std::string& name);

// The name of the file of the task `id`, or "" likewise.
std::string TaskFileName(const char* id);

// The name of the log of the task `id`, beside the file; "" likewise.
std::string TaskLogName(const char* id);

// The id of the task whose file is `name`; "" if that is no task's file.
std::string TaskIdOfFile(std::string_view name);

}  // namespace ORBO
