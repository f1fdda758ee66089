#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/HttpExchange.h"
#include "support/TestRoot.h"

namespace e2e {

enum class ServerKind { kLighttpd, kApache };

// A web server with a root directory and a port of its own, configured by the
// files that are shipped as examples.  It is stopped, and its directory removed,
// with the object; also when the test program is killed.
class WebServer {
 public:
  // Returns once the server accepts connections; throws std::exception if it
  // does not.
  explicit WebServer(ServerKind kind);
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  const TestRoot& root() const { return root_; }
  // "127.0.0.1:port", as clients write it into Host.
  std::string Host() const;

  // `target` as in the request line; `headers` are whole lines.  Content-Length
  // is added when there is a body or the method is POST.
  HttpResponse Send(const std::string& method, const std::string& target,
                    const std::vector<std::string>& headers = {},
                    const std::string& body = std::string()) const;
  // Calls through the program; `query` and `form` are parameter lines.
  HttpResponse Get(const std::string& query, const std::vector<std::string>& headers = {}) const;
  HttpResponse Post(const std::string& query, const std::string& form) const;
  HttpResponse SendRaw(const std::string& request,
                       AfterRequest after = AfterRequest::kListen) const {
    return Exchange(port_, request, after);
  }
  // Whether a program of this server's web-API directory runs.
  bool RunsPrograms() const;

 private:
  bool Start(ServerKind kind);
  void Stop();

  TestRoot root_;
  std::uint16_t port_ = 0;
  pid_t guardian_ = -1;  // the process that starts the server and outlives this one
  int control_ = -1;     // the guardian stops the server on a word or the end of this
};

}  // namespace e2e
