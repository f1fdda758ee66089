#pragma once

#include <json/value.h>

#include <cstdio>
#include <memory>
#include <string>

// The relay client: calls of web APIs that are made on another server.
//
// A target is another server that the system's administrator has named, by an id
// above 0.  Who may use it, the credential that is shown to it, how it is told from
// an impostor, and the limits of time and size are the platform's business.
namespace ORBO {

// One queued request.
class CredRequest {
 public:
  // Limits the whole exchange, to no more than the target's own limit.  Without this
  // call, and for 0 or less, the target's holds.
  void SetResponseTimeout(long seconds) { response_timeout_ = seconds; }
  long response_timeout() const { return response_timeout_; }

 private:
  long response_timeout_ = -1;
};

// Queues requests and makes them, one after another, in the name of one user of this
// server.  Nothing goes out before Run.
class CredRequestMgr {
 public:
  explicit CredRequestMgr(const std::string& user);
  ~CredRequestMgr();
  CredRequestMgr(const CredRequestMgr&) = delete;
  CredRequestMgr& operator=(const CredRequestMgr&) = delete;

  // Queues a call of the target's web API.  The members of `params` become its
  // parameters and keep their JSON types; whatever they say, the call is the one that
  // the arguments name, and "_sid" and "tid", which are the caller's secrets, give
  // way to the target's credential.  The request's id; negative, and logged, if there
  // is no such target, the user may not use it, or the request that this process
  // serves has been relayed too often already.
  int AddWebAPIRequest(long target, const std::string& api, int version, const std::string& method,
                       const Json::Value& params);

  // Queues the same call as an upload: what is left of the body of this process's
  // request, with the Content-Type in `headers`.  The fields of that body that have
  // been read already, and parameters from elsewhere, come along if a web-API
  // request for the same call is queued next.  `in` is standard input, and is read
  // by Run.  The answer goes to `out` unless that is null.  Where this fails, so does
  // every further request for the same target.
  int AddRelayRequest(long target, const std::string& api, int version, const std::string& method,
                      const Json::Value& headers, std::FILE* in, std::FILE* out);

  // Null for an id that no operation gave.  Valid while the manager lives.
  CredRequest* GetRequest(int id);

  // Makes the requests in the order they were queued, up to the first that fails.
  // An answer is a JSON object with "success", whatever its HTTP status; anything else
  // is a failure, and so is an upload that the target does not report success for.
  // Every failure is logged.
  bool Run();

  // What Run failed by: a code of libcurl, 0 for none.
  int GetError() const;

  // The answer to a request, "" where there is none.  Valid while the manager lives.
  const std::string& GetResponse(int id) const;

 private:
  class Private;
  std::unique_ptr<Private> private_;
};

}  // namespace ORBO
