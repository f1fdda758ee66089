#pragma once

#include <string>

#include "platform/linux/private_directory.h"
#include "platform/linux/task_record.h"

namespace ORBO {

// The one who may change the records of an owner while this object lives; readers do
// not wait.  Short-lived: no process is forked meanwhile, since it would hold the
// lock too.
class TaskWriter {
 public:
  // Opens the owner's directory, which is made where it is missing, and waits for
  // other writers up to `seconds`.
  TaskWriter(const std::string& directory, int seconds);

  bool IsReady() const { return is_ready_; }
  const PrivateDirectory& directory() const { return directory_; }

  // Each is done as a whole or not at all, and readers never see it half done.  Create
  // makes a record that is not there yet, Replace changes one that is, Remove also
  // removes the task's log.
  bool Create(const std::string& file, const TaskRecord& record) const;
  bool Replace(const std::string& file, const TaskRecord& record) const;
  bool Remove(const std::string& file) const;

 private:
  PrivateDirectory directory_;
  bool is_ready_;
};

// Makes an owner's directory where it is missing.  False if it cannot be used.
bool MakeTaskDirectory(const std::string& directory);

// Whether an owner's directory can be used or is only missing.
bool IsTaskDirectoryUsable(const std::string& directory);

}  // namespace ORBO
