#pragma once

#include <json/value.h>

#include <memory>
#include <string>

// The task manager: records of background tasks, which one process writes and any
// other may read at any instant.  A record is filed under an owner, a user's name or
// "@administrators" or "@users", by a short id that is unique for that owner.
//
// Owners and ids come from clients too: whatever they hold ("/", "..", NUL, any
// length), they never lead to anything but a record.  Nothing here throws.
//
// The names are fixed: handlers call these operations too.
// NOLINTBEGIN(readability-identifier-naming)
namespace KEP {

// One record: an object of properties, and what the manager keeps beside them.
//
// An object of this class works on the copy that it read last; changes are made to
// what is stored at that moment, so that writers of different properties do not undo
// each other's.  Not thread-safe.
class Task {
 public:
  // Opens the record, or, where there is none yet, prepares the one that the first
  // update makes.
  Task(const char* owner, const char* task_id);
  ~Task();
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;

  // False where owner or id cannot name a record (null, empty, too long), the
  // manager's directory cannot be used, or what lies there is no record; then all
  // operations fail.
  bool isOpen() const;
  const std::string& getTaskId() const;

  // --- Changes: between these two, and stored all together or not at all ---

  // Reads the record again.  False, and nothing begun, if other writers of the owner's
  // tasks take too long (10 s), or the record has been removed since it was read: it
  // is not made again.  No other process may be forked before the update's end.
  bool beginUpdate();
  // False outside an update, without a name, or if the value is nested too deep to be
  // read again (more than 511).  What is read from this object changes at the update's
  // end.
  bool setProperty(const char* name, const Json::Value& value);
  // True once readers see the new properties.  Also ends an update that fails, for
  // example since the record would get too large (16 MiB); the record is as it was then.
  bool endUpdate();
  // Ends an update without storing anything, if one has begun.
  void dropUpdate();

  // --- Reading ---

  // Reads the record again; false if there is none any more, and what was read before
  // stays.
  bool reload();
  bool hasProperty(const char* name) const;
  Json::Value getProperty(const char* name) const;  // null when absent
  bool getBoolProperty(const char* name, bool fallback) const;

  // --- The process and the end of the task ---
  //
  // The changes among these are updates of their own, or a part of the one that has
  // begun, and fail where there is no record.

  // Says which process does the work.  Its start time is kept too, so that another
  // process that later gets the same id is never taken for it.  False if there is no
  // such process, or the task has been marked finished: nobody would signal it.
  bool setCreatePid(int pid);
  // That process's id; 0 when none was set, it is gone, or the system does not show
  // whether it is that process.  For root also 0 if it is not a process of the user
  // whose records these are, who may have written any id.
  int getCreatePid() const;
  // Sends `signal` to that process and to no other one that gets its id meanwhile.  0,
  // or an error number of errno.h: ESRCH where getCreatePid gives 0.
  int signalCreatePid(int signal) const;
  // Whether the task was marked so, or its process is gone; or, where none was ever
  // set, the one that made the record is gone, 10 s after that.  Never true while the
  // properties in this object are older than the last ones: read again then.
  bool isFinished() const;
  // Whether the task was marked so, as it was read last.
  bool isMarkedFinished() const;
  // Marks the task finished; of several marks the first one's time and the last one's
  // choice hold.  With `auto_remove` the record is removed after a grace period
  // (`task_grace` in platform.conf, default 300 s), else it stays.  A task whose
  // process ended without this is treated by its property "auto_remove".
  bool finish(bool auto_remove);
  // Removes the record at once, and ends an update that has begun.
  bool remove();

  // Waits until another process has written the property `name`, the task is finished
  // or its process gone, the record is removed, or `limit` seconds are over.  True if
  // the property is there.  What was read last is in this object then.
  bool waitForDataReady(const char* name, unsigned long limit);

 private:
  struct Record;
  std::unique_ptr<Record> record_;
};

// An update of a task that is dropped at the end of this object unless it has been
// ended, so that the owner's other writers never wait for one that was left by an
// exception.
class TaskUpdate {
 public:
  explicit TaskUpdate(Task& task) : task_(task), has_begun_(task.beginUpdate()) {}
  ~TaskUpdate() {
    if (has_begun_) {
      task_.dropUpdate();
    }
  }
  TaskUpdate(const TaskUpdate&) = delete;
  TaskUpdate& operator=(const TaskUpdate&) = delete;

  bool hasBegun() const { return has_begun_; }

 private:
  Task& task_;
  bool has_begun_;
};

// The tasks of one owner.
class TaskMgr {
 public:
  explicit TaskMgr(const char* owner);

  // False where the owner cannot have records or the directory cannot be used.  An
  // owner without records is fine.
  bool isOpen() const { return is_open_; }

  // The short ids that begin with `prefix` (null: all), oldest first; an empty array
  // when there are none.  Records whose grace period is over are never among them, and
  // are removed.
  Json::Value getAllTaskId(const char* prefix) const;

 private:
  std::string owner_;
  bool is_open_;
};

namespace TaskUtil {

// A new short id: `prefix` (null counts as "") and random text, so that no two
// processes get the same one.  "" where no record can have it.  Now and then removes
// the owner's records whose grace period is over.
std::string getUniqueID(const char* owner, const char* prefix);

bool checkTaskExists(const char* owner, const char* task_id);

}  // namespace TaskUtil

}  // namespace KEP
// NOLINTEND(readability-identifier-naming)
