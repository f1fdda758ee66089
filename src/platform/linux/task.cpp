#include "platform/task.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "platform/linux/process_identity.h"
#include "platform/linux/task_path.h"
#include "platform/linux/task_record.h"
#include "platform/linux/task_store.h"
#include "platform/linux/task_watch.h"
#include "util/json_scan.h"
#include "util/json_text.h"
#include "util/json_types.h"

namespace KEP {
namespace {

using ORBO::FileState;

constexpr int kLongestWaitForWriters = 10;  // seconds
constexpr unsigned long kLongestWait = 1000000000;

}  // namespace

struct Task::Record {
  std::string id;
  std::string directory;
  std::string file;
  bool is_open = false;
  // Whether there was a record at any reading.  One that is gone is not made again.
  bool was_there = false;
  ORBO::TaskRecord stored;  // as it was read last

  // The update that has begun, null if none has.
  std::unique_ptr<ORBO::TaskWriter> writer;
  ORBO::TaskRecord draft;

  FileState ReadInto(ORBO::TaskRecord& out) const {
    return ORBO::ReadTaskRecord(directory, file, out);
  }

  FileState Reload() {
    const FileState state = ReadInto(stored);
    was_there = was_there || state == FileState::kRead;
    return state;
  }

  bool Begin() {
    if (!is_open || writer != nullptr) {
      return false;
    }
    auto new_writer = std::make_unique<ORBO::TaskWriter>(directory, kLongestWaitForWriters);
    if (!new_writer->IsReady()) {
      return false;
    }
    const FileState state = Reload();
    if (state == FileState::kUnusable || (state == FileState::kMissing && was_there)) {
      return false;
    }
    draft = was_there ? stored : ORBO::NewTaskRecord();
    writer = std::move(new_writer);
    return true;
  }

  bool End() {
    const std::unique_ptr<ORBO::TaskWriter> held = std::move(writer);
    if (held == nullptr || !(was_there ? held->Replace(file, draft) : held->Create(file, draft))) {
      return false;
    }
    was_there = true;
    stored = std::move(draft);
    return true;
  }

  // Changes a record that is there, as a part of the update that has begun or by one
  // of its own.  `change` returns false where it refuses.
  template <typename Change>
  bool Apply(Change change) {
    if (writer != nullptr) {
      return change(draft);
    }
    if (!Begin()) {
      return false;
    }
    if (!was_there || !change(draft)) {
      writer.reset();
      return false;
    }
    return End();
  }

  bool IsWorkerRunning() const {
    if (ORBO::StateOf(stored.worker) != ORBO::ProcessState::kRunning) {
      return false;
    }
    struct stat status;
    return geteuid() != 0 ||
           (stat(directory.c_str(), &status) == 0 &&
            (status.st_uid == 0 || ORBO::IsProcessOf(stored.worker.pid, status.st_uid)));
  }

  // The text of a property; null if there is none.
  const std::string* Find(const char* name) const {
    if (name == nullptr) {
      return nullptr;
    }
    const auto property = stored.properties.find(ORBO::TaskPropertyName(name));
    return property == stored.properties.end() ? nullptr : &property->second;
  }
};

Task::Task(const char* owner, const char* task_id) : record_(std::make_unique<Record>()) {
  record_->id = task_id == nullptr ? "" : task_id;
  record_->directory = ORBO::TaskDirectory(owner);
  record_->file = ORBO::TaskFileName(task_id);
  record_->is_open = !record_->directory.empty() && !record_->file.empty() &&
                     record_->Reload() != FileState::kUnusable;
}

Task::~Task() = default;

bool Task::isOpen() const { return record_->is_open; }

const std::string& Task::getTaskId() const { return record_->id; }

bool Task::beginUpdate() { return record_->Begin(); }

bool Task::setProperty(const char* name, const Json::Value& value) {
  if (record_->writer == nullptr || name == nullptr || *name == '\0') {
    return false;
  }
  // One value that is nested too deep would make the record unreadable, in which it is
  // a level deeper.
  std::string text = "[";
  ORBO::JSON::Append(value, text);
  text += ']';
  if (!ORBO::JSON::IsJson(text, ORBO::JSON::Comments::kRefused)) {
    return false;
  }
  text.pop_back();
  text.erase(0, 1);
  record_->draft.properties.insert_or_assign(ORBO::TaskPropertyName(name), std::move(text));
  return true;
}

bool Task::endUpdate() { return record_->End(); }

void Task::dropUpdate() { record_->writer.reset(); }

bool Task::reload() { return record_->is_open && record_->Reload() == FileState::kRead; }

bool Task::hasProperty(const char* name) const { return record_->Find(name) != nullptr; }

Json::Value Task::getProperty(const char* name) const {
  const std::string* const text = record_->Find(name);
  Json::Value value;
  if (text != nullptr) {
    ORBO::JSON::Parse(*text, value);
  }
  return value;
}

bool Task::getBoolProperty(const char* name, bool fallback) const {
  return hasProperty(name) ? ORBO::JSON::AsBool(getProperty(name)) : fallback;
}

bool Task::setCreatePid(int pid) {
  ORBO::ProcessIdentity worker;
  return ORBO::IdentifyProcess(pid, worker) && record_->Apply([&worker](ORBO::TaskRecord& record) {
    record.worker = record.finished == 0 ? worker : record.worker;
    return record.finished == 0;
  });
}

int Task::getCreatePid() const {
  return record_->IsWorkerRunning() ? static_cast<int>(record_->stored.worker.pid) : 0;
}

int Task::signalCreatePid(int signal) const {
  return record_->IsWorkerRunning() ? ORBO::SignalProcess(record_->stored.worker, signal) : ESRCH;
}

bool Task::isFinished() const {
  const ORBO::TaskRecord& stored = record_->stored;
  if (!record_->was_there || !ORBO::IsTaskOver(stored)) {
    return false;
  }
  // The process may have written its result after the last reading and ended before
  // this call: a caller must not take the older properties for the last ones.
  ORBO::TaskRecord last;
  return stored.finished != 0 || record_->ReadInto(last) != FileState::kRead ||
         last.properties == stored.properties;
}

bool Task::isMarkedFinished() const { return record_->stored.finished != 0; }

bool Task::finish(bool auto_remove) {
  return record_->Apply([auto_remove](ORBO::TaskRecord& record) {
    record.finished = record.finished != 0 ? record.finished : std::time(nullptr);
    record.auto_remove = auto_remove;
    return true;
  });
}

bool Task::remove() {
  if (record_->writer == nullptr && !record_->Begin()) {
    return false;
  }
  const std::unique_ptr<ORBO::TaskWriter> writer = std::move(record_->writer);
  return writer->Remove(record_->file);
}

bool Task::waitForDataReady(const char* name, unsigned long limit) {
  using ORBO::TaskWatch;
  const TaskWatch::Clock::time_point deadline =
      TaskWatch::Clock::now() + std::chrono::seconds(std::min(limit, kLongestWait));
  if (!record_->is_open) {
    return false;
  }
  TaskWatch watch(record_->directory, record_->file);
  for (auto event = TaskWatch::Event::kChange;;
       event = watch.Wait(record_->stored.worker, deadline)) {
    if (!reload()) {
      return false;
    }
    if (hasProperty(name)) {
      return true;
    }
    if (event != TaskWatch::Event::kChange || isFinished()) {
      return false;
    }
  }
}

}  // namespace KEP
