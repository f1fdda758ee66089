#include <webapi/APIProgress.h>
#include <webapi/APIResponse.h>

#include <algorithm>
#include <chrono>
#include <ctime>

#include "util/json_types.h"

namespace ORBO {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kInterval = std::chrono::milliseconds(200);
constexpr double kLongestEstimate = 1e10;  // seconds

}  // namespace

struct APIProgress::State {
  APIResponse* response;  // not owned
  std::uint64_t total;
  std::uint64_t done = 0;                     // at the last Update
  std::int64_t started = std::time(nullptr);  // seconds since the epoch
  Clock::time_point begin = Clock::now();
  Clock::time_point written;
  bool is_written = false;

  Json::Value Facts(const std::string& message) const;
};

Json::Value APIProgress::State::Facts(const std::string& message) const {
  Json::Value facts(Json::objectValue);
  facts["done"] = static_cast<Json::UInt64>(done);
  facts["started"] = static_cast<Json::Int64>(started);
  if (!message.empty()) {
    facts["message"] = message;
  }
  if (total == 0) {
    return facts;
  }
  const double part = static_cast<double>(std::min(done, total)) / static_cast<double>(total);
  facts["total"] = static_cast<Json::UInt64>(total);
  facts["percent"] = 100 * part;
  if (part > 0) {
    const std::chrono::duration<double> elapsed = Clock::now() - begin;
    const double needed = std::min(elapsed.count() / part, kLongestEstimate);
    facts["estimated_end"] = started + static_cast<Json::Int64>(needed);
  }
  return facts;
}

APIProgress::APIProgress(APIResponse* response, std::uint64_t total)
    : state_(std::make_unique<State>()) {
  state_->response = response;
  state_->total = total;
}

APIProgress::~APIProgress() = default;

void APIProgress::SetTotal(std::uint64_t total) { state_->total = total; }

void APIProgress::Update(std::uint64_t done, const std::string& message) {
  state_->done = done;
  const Clock::time_point now = Clock::now();
  if (state_->is_written && now - state_->written < kInterval) {
    return;
  }
  state_->is_written = true;
  state_->written = now;
  Json::Value data(Json::objectValue);
  data["progress"] = state_->Facts(message);
  state_->response->SetSuccess(data);
}

void APIProgress::Finish(const Json::Value& data) {
  Json::Value result = JSON::IsObject(data) ? data : Json::Value(Json::objectValue);
  if (state_->total != 0) {
    state_->done = state_->total;
  }
  Json::Value facts = state_->Facts("");
  facts["percent"] = 100;
  JSON::Set(result, "progress", facts);
  state_->response->SetSuccess(result);
}

}  // namespace ORBO
