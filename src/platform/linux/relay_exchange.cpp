#include "platform/linux/relay_exchange.h"

#include <algorithm>
#include <string_view>

#include "platform/linux/cgi_variables.h"
#include "util/json_cursor.h"
#include "util/number_text.h"

namespace ORBO {
namespace {

constexpr char kHopsHeader[] = "X-Webapi-Relay-Hops: ";
constexpr char kHopsVariable[] = "HTTP_X_WEBAPI_RELAY_HOPS";
constexpr std::int64_t kMostHops = 4;
constexpr long kStatusOK = 200;

// How often the request that this process serves has been relayed.  What is no number
// is too often.
std::int64_t HopsSoFar() {
  const std::string_view text = CgiVariable(kHopsVariable);
  JSON::Integer integer;
  std::int64_t hops = 0;
  return text.empty() ||
                 (JSON::ReadInteger(text, integer) && JSON::ToSigned(integer, hops) && hops >= 0)
             ? hops
             : kMostHops;
}

// What an answer says of itself.
struct Verdict {
  bool is_answer = false;  // one JSON object that reports success or none
  bool is_success = false;
  std::string error;
};

Verdict Judge(std::string_view text) {
  Verdict verdict;
  const bool is_object =
      JSON::ForEachMember(text, [&verdict](std::string_view name, std::string_view value) {
        if (JSON::QuotedEquals(name, "success")) {
          verdict.is_success = value == "true";
          verdict.is_answer = verdict.is_success || value == "false";
        } else if (JSON::QuotedEquals(name, "error")) {
          verdict.error = value;
        }
        return true;
      });
  verdict.is_answer = verdict.is_answer && is_object;
  return verdict;
}

void Fail(int error, const std::string& message, RelayAnswer& answer) {
  answer.error = error;
  answer.message = message;
}

}  // namespace

void CheckRelayAnswer(bool is_upload, RelayAnswer& answer) {
  if (answer.error != 0) {
    return;
  }
  // Handlers set statuses too, beside answers of theirs.
  const Verdict verdict = Judge(answer.text);
  if (!verdict.is_answer && answer.status != kStatusOK) {
    Fail(kRelayHttpStatus, "it answers with HTTP status " + std::to_string(answer.status), answer);
  } else if (!verdict.is_answer) {
    Fail(kRelayStrangeAnswer, "what it answers is no answer of a web API", answer);
  } else if (is_upload && !verdict.is_success) {
    Fail(kRelayUploadRefused, "it refuses the upload: " + verdict.error, answer);
  }
}

bool IsRelayedTooOften() { return HopsSoFar() >= kMostHops; }

RelayExchange BeginRelayExchange(const RelayTarget& target, bool is_upload, long limit) {
  RelayExchange exchange;
  exchange.url = target.url;
  exchange.headers.push_back(kHopsHeader + std::to_string(HopsSoFar() + 1));
  exchange.is_verified = target.is_verified;
  exchange.authority = target.authority;
  exchange.pin = target.pin;
  exchange.max_answer = target.max_answer_size;
  exchange.time_limit = is_upload ? target.upload_timeout : target.timeout;
  if (limit > 0) {
    exchange.time_limit = std::min(exchange.time_limit, limit);
  }
  exchange.quiet_limit = std::min(target.timeout, exchange.time_limit);
  return exchange;
}

}  // namespace ORBO
