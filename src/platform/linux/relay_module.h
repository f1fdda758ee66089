#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ORBO {

// What the module webapi-KEP5-relay.so offers.  It alone is linked with the HTTP
// library, which would more than triple the time that every process takes to start.

// One POST request.  It goes where `url` says and nowhere else: no redirect is followed,
// and no proxy of the environment is asked.
struct RelayExchange {
  std::string url;  // http or https
  std::vector<std::string> headers;
  // The body: `body`, and after it `rest_size` bytes that `read_rest` gives piece by
  // piece: how many, negative to break off.
  std::string body;
  std::uint64_t rest_size = 0;
  std::function<std::int64_t(char* buffer, std::size_t size)> read_rest;

  // Whether the other side must have a certificate of its name from an authority: the
  // system's, or those of the file `authority`.  `pin`, if it is not empty, is the key
  // that it must have in any case, as "sha256//" and its digest in Base64.
  bool is_verified = true;
  std::string authority;
  std::string pin;

  long time_limit = 0;   // seconds for all of it
  long quiet_limit = 0;  // seconds in which nothing moves
  std::uint64_t max_answer = 0;
};

struct RelayAnswer {
  int error = 0;        // a code of the library, 0 for none
  std::string message;  // what failed, for the log
  long status = 0;      // of HTTP
  std::string text;
};

// Codes of the library that the platform itself fails with.
inline constexpr int kRelayNoClient = 2;         // CURLE_FAILED_INIT
inline constexpr int kRelayStrangeAnswer = 8;    // CURLE_WEIRD_SERVER_REPLY
inline constexpr int kRelayHttpStatus = 22;      // CURLE_HTTP_RETURNED_ERROR
inline constexpr int kRelayUploadRefused = 25;   // CURLE_UPLOAD_FAILED
inline constexpr int kRelayBodyUnreadable = 26;  // CURLE_READ_ERROR
inline constexpr int kRelayNoMemory = 27;        // CURLE_OUT_OF_MEMORY
inline constexpr int kRelayTooLarge = 63;        // CURLE_FILESIZE_EXCEEDED

struct RelayModule {
  void (*exchange)(const RelayExchange& exchange, RelayAnswer& answer);
};

// The module's one symbol, a function without parameters that returns its table.
inline constexpr char kRelayModuleEntry[] = "WebapiRelayModule";
using RelayModuleEntry = const RelayModule* (*)();

// Makes the request.  Where the module cannot be used, which is logged, the answer is
// kRelayNoClient.
void MakeRelayExchange(const RelayExchange& exchange, RelayAnswer& answer);

}  // namespace ORBO
