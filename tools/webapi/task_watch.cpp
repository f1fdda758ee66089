#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>

#include "Arguments.h"
#include "json_view.h"
#include "output.h"
#include "platform/linux/task_path.h"
#include "platform/linux/task_watch.h"
#include "printable.h"
#include "task_view.h"
#include "util/json_types.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "On a terminal a bar shows how far the task is; elsewhere each change is a line.  At\n"
    "the end the task's result is printed as JSON.  Ctrl-C ends the watching and not the\n"
    "task.\n"
    "\n"
    "Exit codes: 0 when the task has succeeded, 1 when it has not, 2 wrong usage.\n"
    "\n"
    "Examples:\n"
    "  webapi task watch alice/checksum_Uq2v\n";

constexpr int kBarWidth = 30;
constexpr std::size_t kLongestMessage = 40;
constexpr char kClearLine[] = "\r\x1b[K";

// Seconds until the estimated end, as text; "" where that is not known.
std::string RemainingText(const Json::Value& progress) {
  const Json::Value* const end = JSON::Find(progress, "estimated_end");
  if (end == nullptr) {
    return "";
  }
  const std::int64_t seconds = std::max<std::int64_t>(0, JSON::AsInt64(*end) - std::time(nullptr));
  return ", " + std::to_string(seconds) + " s left";
}

std::string BarText(const Json::Value& progress) {
  const int filled =
      std::clamp(JSON::AsInt(JSON::At(progress, "percent")), 0, 100) * kBarWidth / 100;
  return "[" + std::string(static_cast<std::size_t>(filled), '#') +
         std::string(static_cast<std::size_t>(kBarWidth - filled), '-') + "] ";
}

// How far the task is, on one line.
std::string ProgressText(const Json::Value& progress, bool with_bar) {
  const std::string percent = PercentText(progress);
  std::string message = JSON::AsString(JSON::At(progress, "message"));
  if (message.size() > kLongestMessage) {
    // Of a path the end tells most.
    std::size_t begin = message.size() - kLongestMessage;
    while (begin < message.size() && (static_cast<unsigned char>(message[begin]) & 0xc0) == 0x80) {
      ++begin;
    }
    message = "..." + message.substr(begin);
  }
  return (with_bar && !percent.empty() ? BarText(progress) : "") +
         (percent.empty() ? "running" : percent) + RemainingText(progress) +
         (message.empty() ? "" : "  " + Printable(message));
}

// Shows the progress where it is news.  False if the output is gone.
bool Show(const Json::Value& status, bool on_terminal, std::string& shown) {
  const std::string text = ProgressText(TaskProgress(status), on_terminal);
  if (text == shown) {
    return true;
  }
  shown = text;
  return Print(on_terminal ? kClearLine + text : text + "\n");
}

ExitCode Run(const Arguments& arguments) {
  if (!MayReadTasks()) {
    return kFailed;
  }
  const std::string& id = arguments.operands().front();
  const std::size_t slash = std::min(id.find('/'), id.size());
  const bool on_terminal = isatty(STDOUT_FILENO) == 1;
  TaskWatch watch(TaskDirectory(id.substr(0, slash).c_str()),
                  TaskFileName(id.substr(std::min(slash + 1, id.size())).c_str()));
  Json::Value status;
  std::string shown;
  for (;;) {
    if (!LoadTask(id, status)) {
      return kFailed;
    }
    if (JSON::AsBool(JSON::At(status, "finish"))) {
      break;
    }
    if (!Show(status, on_terminal, shown)) {
      return kFailed;
    }
    // The end of the process is seen in the status.
    watch.Wait({}, TaskWatch::Clock::now() + std::chrono::seconds(1));
  }
  if (on_terminal && !shown.empty() && !Print(kClearLine)) {
    return kFailed;
  }
  return PrintDocument(status) && TaskState(status) == "done" ? kDone : kFailed;
}

}  // namespace

const Command kTaskWatch = {
    "watch", "Shows the progress of a task until its end", "ID", 1, 1, kOptions, kDetails, Run,
    nullptr};

}  // namespace ORBO::tool
