#pragma once

#include <json/value.h>

#include <cstdint>
#include <memory>
#include <string>

#include <webapi/Export.h>

namespace ORBO {

class APIResponse;

// How far a background task is, told in its results.  Clients find the member
// "progress" in the data of the task's body:
//
//   "percent"  number from 0 to 100, where the amount of work is known or all is done
//   "done", "total"  units of work; "total" absent where it is not known
//   "message"  what is being done, absent when ""
//   "started"  seconds since the epoch
//   "estimated_end"  seconds since the epoch, from the pace so far; absent until
//              something is done, and where the amount of work is not known
//
// For the function that APIPolling::Start runs, around its work:
//
//   APIProgress progress(response, files.size());
//   for (...) { ...; progress.Update(++done, name); }
//   progress.Finish(result);
//
// Not thread-safe.
class WEBAPI_EXPORT APIProgress {
 public:
  // `response` is the task's own; not owned, must outlive this object.  `total` units
  // of work are to be done, 0 where that is not known.
  APIProgress(APIResponse* response, std::uint64_t total);
  ~APIProgress();

  // Not copyable: two objects would write over each other's results.
  APIProgress(const APIProgress&) = delete;
  APIProgress& operator=(const APIProgress&) = delete;

  // The amount of work, found out or corrected later.
  void SetTotal(std::uint64_t total);

  // Tells that `done` units are done.  A result is written at the first call and then
  // at most five times a second: call it as often as convenient.
  void Update(std::uint64_t done, const std::string& message = std::string());

  // Sets the final result: the members of the object `data` beside the progress,
  // which is complete.
  void Finish(const Json::Value& data = Json::Value());

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace ORBO
