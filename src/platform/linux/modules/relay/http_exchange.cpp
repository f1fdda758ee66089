#include "platform/linux/modules/relay/http_exchange.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>

namespace ORBO {
namespace {

constexpr long kConnectLimit = 10;  // seconds
constexpr std::int64_t kBreakOff = -1;

static_assert(kRelayNoClient == CURLE_FAILED_INIT &&
              kRelayStrangeAnswer == CURLE_WEIRD_SERVER_REPLY);
static_assert(kRelayHttpStatus == CURLE_HTTP_RETURNED_ERROR &&
              kRelayUploadRefused == CURLE_UPLOAD_FAILED);
static_assert(kRelayNoMemory == CURLE_OUT_OF_MEMORY);
static_assert(kRelayBodyUnreadable == CURLE_READ_ERROR &&
              kRelayTooLarge == CURLE_FILESIZE_EXCEEDED);

using Handle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using HeaderList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

// One request on its way.
class HttpExchange {
 public:
  HttpExchange(const RelayExchange& exchange, RelayAnswer& answer)
      : exchange_(exchange), answer_(answer) {}

  CURLcode Perform();

 private:
  template <typename Value>
  void Set(CURLoption option, Value value);
  void SetRequest();
  void SetTrust();
  void SetLimits();
  bool SetHeaders();

  static std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* self) noexcept;
  static std::size_t OnWrite(char* bytes, std::size_t size, std::size_t count, void* self) noexcept;
  std::int64_t Read(char* buffer, std::size_t size);
  bool Append(const char* bytes, std::size_t size);

  const RelayExchange& exchange_;
  RelayAnswer& answer_;
  HeaderList headers_{nullptr, curl_slist_free_all};
  CURLcode refused_ = CURLE_OK;     // the first option that the library does not know
  CURLcode broken_off_ = CURLE_OK;  // why this side broke the exchange off
  std::size_t sent_ = 0;            // of exchange_.body
  char error_[CURL_ERROR_SIZE] = {};
  // Goes first: it refers to the others.
  Handle handle_{nullptr, curl_easy_cleanup};
};

template <typename Value>
void HttpExchange::Set(CURLoption option, Value value) {
  const CURLcode code = curl_easy_setopt(handle_.get(), option, value);
  if (refused_ == CURLE_OK) {
    refused_ = code;
  }
}

void HttpExchange::SetRequest() {
  Set(CURLOPT_URL, exchange_.url.c_str());
  Set(CURLOPT_ERRORBUFFER, error_);
  Set(CURLOPT_NOSIGNAL, 1L);
  Set(CURLOPT_PROTOCOLS_STR, "http,https");
  // Else the variables of the environment would name one.
  Set(CURLOPT_PROXY, "");
  Set(CURLOPT_FOLLOWLOCATION, 0L);
  Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  // On a connection that broke the library would make a call a second time.
  Set(CURLOPT_FRESH_CONNECT, 1L);
  Set(CURLOPT_POST, 1L);
  Set(CURLOPT_POSTFIELDSIZE_LARGE,
      static_cast<curl_off_t>(exchange_.body.size() + exchange_.rest_size));
  Set(CURLOPT_READFUNCTION, OnRead);
  Set(CURLOPT_READDATA, static_cast<void*>(this));
  Set(CURLOPT_WRITEFUNCTION, OnWrite);
  Set(CURLOPT_WRITEDATA, static_cast<void*>(this));
}

void HttpExchange::SetTrust() {
  Set(CURLOPT_SSL_VERIFYPEER, exchange_.is_verified ? 1L : 0L);
  Set(CURLOPT_SSL_VERIFYHOST, exchange_.is_verified ? 2L : 0L);
  if (!exchange_.authority.empty()) {
    Set(CURLOPT_CAINFO, exchange_.authority.c_str());
    // Of the directory the library would take the system's authorities besides.
    Set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
  }
  if (!exchange_.pin.empty()) {
    Set(CURLOPT_PINNEDPUBLICKEY, exchange_.pin.c_str());
  }
}

void HttpExchange::SetLimits() {
  // Else the library waits in spite of them for a name server that does not answer.
  Set(CURLOPT_QUICK_EXIT, 1L);
  Set(CURLOPT_CONNECTTIMEOUT, std::min(kConnectLimit, exchange_.time_limit));
  Set(CURLOPT_TIMEOUT, exchange_.time_limit);
  Set(CURLOPT_LOW_SPEED_LIMIT, 1L);
  Set(CURLOPT_LOW_SPEED_TIME, exchange_.quiet_limit);
  Set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(exchange_.max_answer));
}

bool HttpExchange::SetHeaders() {
  // Without these lines the library asks for leave to send a large body, and waits for
  // the answer, which few servers give, for a second.
  const auto add = [this](const char* line) {
    curl_slist* const longer = curl_slist_append(headers_.get(), line);
    if (longer != nullptr) {
      static_cast<void>(headers_.release());
      headers_.reset(longer);
    }
    return longer != nullptr;
  };
  bool is_complete = add("Expect:");
  for (const std::string& header : exchange_.headers) {
    is_complete = add(header.c_str()) && is_complete;
  }
  Set(CURLOPT_HTTPHEADER, headers_.get());
  return is_complete;
}

std::size_t HttpExchange::OnRead(char* buffer, std::size_t size, std::size_t count,
                                 void* self) noexcept {
  auto& exchange = *static_cast<HttpExchange*>(self);
  std::int64_t given = kBreakOff;
  try {
    given = exchange.Read(buffer, size * count);
  } catch (...) {
    // As good as a body that cannot be read.
  }
  if (given < 0) {
    exchange.broken_off_ = CURLE_READ_ERROR;
    return CURL_READFUNC_ABORT;
  }
  return static_cast<std::size_t>(given);
}

std::int64_t HttpExchange::Read(char* buffer, std::size_t size) {
  const std::size_t piece = std::min(size, exchange_.body.size() - sent_);
  if (piece == 0) {
    return exchange_.rest_size > 0 ? exchange_.read_rest(buffer, size) : 0;
  }
  std::memcpy(buffer, exchange_.body.data() + sent_, piece);
  sent_ += piece;
  return static_cast<std::int64_t>(piece);
}

std::size_t HttpExchange::OnWrite(char* bytes, std::size_t size, std::size_t count,
                                  void* self) noexcept {
  return static_cast<HttpExchange*>(self)->Append(bytes, size * count) ? size * count : 0;
}

bool HttpExchange::Append(const char* bytes, std::size_t size) {
  if (size > exchange_.max_answer - answer_.text.size()) {
    broken_off_ = CURLE_FILESIZE_EXCEEDED;
    return false;
  }
  try {
    answer_.text.append(bytes, size);
    return true;
  } catch (...) {
    broken_off_ = CURLE_OUT_OF_MEMORY;
    return false;
  }
}

CURLcode HttpExchange::Perform() {
  // Once for the process: the library counts the calls.
  if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
    return CURLE_FAILED_INIT;
  }
  handle_.reset(curl_easy_init());
  if (handle_ == nullptr) {
    return CURLE_FAILED_INIT;
  }
  SetRequest();
  SetTrust();
  SetLimits();
  if (!SetHeaders()) {
    return CURLE_OUT_OF_MEMORY;
  }
  if (refused_ != CURLE_OK) {
    return refused_;
  }
  const CURLcode code = curl_easy_perform(handle_.get());
  curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &answer_.status);
  if (code != CURLE_OK && broken_off_ != CURLE_OK) {
    return broken_off_;
  }
  answer_.message = error_;
  return code;
}

}  // namespace

void ExchangeByCurl(const RelayExchange& exchange, RelayAnswer& answer) noexcept {
  try {
    const CURLcode code = HttpExchange(exchange, answer).Perform();
    answer.error = static_cast<int>(code);
    if (code != CURLE_OK && answer.message.empty()) {
      answer.message = curl_easy_strerror(code);
    }
  } catch (const std::exception&) {
    answer.error = CURLE_OUT_OF_MEMORY;
  }
}

}  // namespace ORBO
