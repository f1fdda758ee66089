#include "platform/relay.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

#include "platform/linux/relay_exchange.h"
#include "platform/linux/relay_parameters.h"
#include "platform/linux/relay_target.h"
#include "platform/linux/relay_upload.h"
#include "util/header_line.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "relay.cpp";
constexpr char kFormType[] = "Content-Type: application/x-www-form-urlencoded";

// There is no memory, not even for the text of the exception.
void LogException() { Log(LOG_ERR, "%s:%d relay ended by an exception", kSource, __LINE__); }

// A request in the queue.
struct Queued {
  long target_id = 0;
  RelayTarget target;
  RelayCall call;
  Json::Value params;
  bool is_upload = false;
  std::string content_type;  // of an upload
  std::FILE* out = nullptr;  // not owned
  CredRequest handle;
  std::string answer;
};

// Puts the upload that this process serves into the exchange.  0 or a code.
int SetUpload(const Queued& request, RelayUpload& upload, RelayExchange& exchange) {
  const int error =
      upload.Prepare(request.call, request.params, request.target.token, request.content_type);
  exchange.headers.push_back("Content-Type: " + request.content_type);
  exchange.body = upload.head();
  exchange.read_rest = [&upload, limit = exchange.quiet_limit](char* buffer, std::size_t size) {
    return upload.ReadRest(buffer, size, limit);
  };
  exchange.rest_size = upload.rest_size();
  if (!upload.query().empty()) {
    const bool has_query = exchange.url.find('?') != std::string::npos;
    exchange.url.append(has_query ? "&" : "?").append(upload.query());
  }
  return error;
}

// Makes the request.  0 or a code.
int Make(Queued& request) {
  RelayExchange exchange =
      BeginRelayExchange(request.target, request.is_upload, request.handle.response_timeout());
  RelayUpload upload;
  RelayAnswer answer;
  if (!request.target.is_verified) {
    Log(LOG_ERR, "%s:%d relay target %ld is not verified", kSource, __LINE__, request.target_id);
  }
  if (request.is_upload) {
    if (const int error = SetUpload(request, upload, exchange)) {
      return error;
    }
  } else {
    exchange.headers.emplace_back(kFormType);
    exchange.body = RelayParameterLine(request.call, request.params, request.target.token);
  }
  MakeRelayExchange(exchange, answer);
  CheckRelayAnswer(request.is_upload, answer);
  if (answer.error != 0) {
    Log(LOG_ERR, "%s:%d relay target %ld: %s", kSource, __LINE__, request.target_id,
        LogText(answer.message).c_str());
    return answer.error;
  }
  if (request.out != nullptr) {
    std::fwrite(answer.text.data(), 1, answer.text.size(), request.out);
  }
  request.answer = std::move(answer.text);
  return 0;
}

}  // namespace

class CredRequestMgr::Private {
 public:
  explicit Private(const std::string& user) : user_(user) {}

  // Adds a request to the queue, which `fill` completes.  Its id; negative, and logged,
  // if it may not be made or `fill` says so.
  template <typename Fill>
  int Add(long target, RelayCall call, Fill fill) noexcept;
  Queued* Find(int id) {
    return id >= 0 && static_cast<std::size_t>(id) < queue_.size()
               ? &queue_[static_cast<std::size_t>(id)]
               : nullptr;
  }
  // The upload that was queued last, if it is of the same call as this request.
  Queued* UploadBefore(const Queued& request);
  bool Run() noexcept;
  int error() const { return error_; }
  const std::string& no_answer() const { return no_answer_; }

 private:
  bool LookUp(long id);

  std::string user_;
  std::optional<long> looked_up_;  // the target that was looked at last
  bool is_usable_ = false;         // and whether requests may still be queued for it
  RelayTarget target_;
  std::deque<Queued> queue_;  // pointers into it stay valid
  std::string no_answer_;
  int error_ = 0;
};

bool CredRequestMgr::Private::LookUp(long id) {
  std::string problem;
  if (IsRelayedTooOften()) {
    problem = "the request has been relayed too often";
  } else if (ReadRelayTarget(id, target_, problem) && !MayUseRelayTarget(target_, user_)) {
    problem = "the user may not use it: " + LogText(user_);
  }
  if (!problem.empty()) {
    Log(LOG_ERR, "%s:%d relay target %ld: %s", kSource, __LINE__, id, problem.c_str());
  }
  return problem.empty();
}

template <typename Fill>
int CredRequestMgr::Private::Add(long target, RelayCall call, Fill fill) noexcept {
  try {
    const bool was_looked_up = looked_up_ == target;
    looked_up_ = target;
    // Until the request is queued: a call must not pass over the upload in front of it.
    const bool was_usable = std::exchange(is_usable_, false);
    if (!(was_looked_up ? was_usable : LookUp(target))) {
      return -1;
    }
    Queued request;
    request.target_id = target;
    request.target = target_;
    request.call = std::move(call);
    if (!fill(request)) {
      return -1;
    }
    queue_.push_back(std::move(request));
    is_usable_ = true;
    return static_cast<int>(queue_.size()) - 1;
  } catch (...) {
    LogException();
    return -1;
  }
}

Queued* CredRequestMgr::Private::UploadBefore(const Queued& request) {
  if (queue_.empty()) {
    return nullptr;
  }
  Queued& before = queue_.back();
  return before.is_upload && before.target_id == request.target_id && before.call == request.call
             ? &before
             : nullptr;
}

bool CredRequestMgr::Private::Run() noexcept {
  error_ = 0;
  try {
    for (Queued& request : queue_) {
      error_ = error_ != 0 ? error_ : Make(request);
    }
  } catch (...) {
    LogException();
    error_ = kRelayNoMemory;
  }
  return error_ == 0;
}

CredRequestMgr::CredRequestMgr(const std::string& user)
    : private_(std::make_unique<Private>(user)) {}

CredRequestMgr::~CredRequestMgr() = default;

int CredRequestMgr::AddWebAPIRequest(long target, const std::string& api, int version,
                                     const std::string& method, const Json::Value& params) {
  return private_->Add(target, {api, version, method}, [this, &params](Queued& request) {
    if (JSON::IsObject(params)) {
      request.params = params;
    }
    if (Queued* const upload = private_->UploadBefore(request)) {
      upload->params = request.params;
    }
    return true;
  });
}

int CredRequestMgr::AddRelayRequest(long target, const std::string& api, int version,
                                    const std::string& method, const Json::Value& headers,
                                    std::FILE* in, std::FILE* out) {
  return private_->Add(target, {api, version, method}, [&](Queued& request) {
    request.is_upload = true;
    request.content_type = JSON::AsString(JSON::At(headers, "Content-Type"));
    request.out = out;
    const bool is_usable = in == stdin && !BreaksHeaderLine(request.content_type);
    if (!is_usable) {
      Log(LOG_ERR, "%s:%d relay target %ld: no upload of a request", kSource, __LINE__, target);
    }
    return is_usable;
  });
}

CredRequest* CredRequestMgr::GetRequest(int id) {
  Queued* const request = private_->Find(id);
  return request != nullptr ? &request->handle : nullptr;
}

bool CredRequestMgr::Run() { return private_->Run(); }

int CredRequestMgr::GetError() const { return private_->error(); }

const std::string& CredRequestMgr::GetResponse(int id) const {
  const Queued* const request = private_->Find(id);
  return request != nullptr ? request->answer : private_->no_answer();
}

}  // namespace ORBO
