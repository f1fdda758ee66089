#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "support/TestRoot.h"

namespace e2e {

struct HttpResponse {
  int status = 0;                         // 0 when there was no answer
  std::vector<std::string> header_lines;  // as received, without line ends
  std::string body;
  double seconds = 0;   // until the server closed the connection
  bool closed = false;  // false when it was silent for 30 seconds

  // The values of every header line of that name, whatever its case.
  std::vector<std::string> Headers(const std::string& name) const;
};

// Looks at what has come of an answer so far, and may take it away; false to hang up.
using Watch = std::function<bool(std::string& received)>;

// A socket that listens on the loopback interface, on a port that is free.
int ListenOnLoopback(std::uint16_t& port);

enum class AfterRequest { kListen, kHangUp };
enum class ServerKind { kLighttpd, kApache, kNginx };

// A web server with a root directory and a port of its own, configured by the
// files that are shipped as examples.  It is stopped, and its directory removed,
// with the object; also when the test program is killed.
class WebServer {
 public:
  // Returns once the server accepts connections; throws std::exception if it
  // does not.
  explicit WebServer(ServerKind kind) : WebServer(kind, "") {}
  // Apache with a port for HTTPS too, whose key and certificate are in the file `pem`.
  WebServer(ServerKind kind, const std::string& pem);
  ~WebServer() { Stop(); }
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  const TestRoot& root() const { return root_; }
  // "127.0.0.1:port", as clients write it into Host.
  std::string Host() const { return "127.0.0.1:" + std::to_string(port_); }
  std::string TlsHost() const { return "127.0.0.1:" + std::to_string(tls_port_); }

  // `target` as in the request line; `headers` are whole lines.
  HttpResponse Send(const std::string& method, const std::string& target,
                    const std::vector<std::string>& headers = {},
                    const std::string& body = std::string()) const;
  // Calls through the program; `query` and `form` are parameter lines.
  HttpResponse Get(const std::string& query, const std::vector<std::string>& headers = {}) const;
  HttpResponse Post(const std::string& query, const std::string& form) const;
  // Sends `request` as it stands and reads until the server closes the
  // connection.  A server that answers before it has read everything is fine.  A
  // client that hangs up sends nothing more and says so, yet reads on.
  HttpResponse SendRaw(const std::string& request, AfterRequest after = AfterRequest::kListen,
                       const Watch& watch = nullptr) const;
  // A connection of which the caller makes what it will, and closes it.
  int Connect() const;
  // The directories in /proc of the programs of this server's web-API directory that run.
  std::vector<std::string> Programs() const;
  bool RunsPrograms() const { return !Programs().empty(); }

 private:
  bool Start(ServerKind kind, const std::string& pem);
  void Stop();

  TestRoot root_;
  std::uint16_t port_ = 0;
  std::uint16_t tls_port_ = 0;
  std::FILE* guardian_ = nullptr;  // stops the server on a word or the end of this
};

}  // namespace e2e
