#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace ORBO::tool {

// False, after a complaint, if this process may not read the tasks.
bool MayReadTasks();

// The full ids of the tasks of everybody, or of one owner, oldest first for each.
std::vector<std::string> TaskIds(const std::string& owner);

// Reads the status of a task as its owner sees it.  False, after a complaint, if there
// is no such task.
bool LoadTask(const std::string& full_id, Json::Value& status);

// Stops a task; with `remove` the record goes some time later.  False after a
// complaint.
bool StopTask(const std::string& full_id, bool remove);

// "running", "done", "failed", or "stopped" for one that ended before its progress was
// complete.
std::string TaskState(const Json::Value& status);

// The progress of a task's status, an object that is empty where there is none.
const Json::Value& TaskProgress(const Json::Value& status);

// "42 %", or "" where that is not known.
std::string PercentText(const Json::Value& progress);

}  // namespace ORBO::tool
