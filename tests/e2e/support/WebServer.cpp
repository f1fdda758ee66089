#include "support/WebServer.h"

#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "support/wait.h"

namespace e2e {

namespace {

struct Setup {
  const char* command;  // to run in the foreground, up to the configuration's name
  const char* configuration;
  const char* run_as;             // lines for a server that root starts
  const char* starter = nullptr;  // of the CGI programs, up to its socket's name
};

constexpr Setup kLighttpd = {E2E_LIGHTTPD " -D -f", "lighttpd.conf",
                             "server.username = \"www-data\"\nserver.groupname = \"www-data\"\n"};
constexpr Setup kApache = {E2E_APACHE " -DFOREGROUND -f", "apache.conf",
                           "User www-data\nGroup www-data\n"};
constexpr Setup kNginx = {E2E_NGINX " -g 'daemon off;' -c", "nginx.conf", "user www-data;\n",
                          E2E_FCGIWRAP " -c 8 -s unix:"};

const Setup& SetupOf(ServerKind kind) {
  switch (kind) {
    case ServerKind::kLighttpd:
      return kLighttpd;
    case ServerKind::kApache:
      return kApache;
    default:
      return kNginx;
  }
}

// Shell commands that start what the server starts programs by, in a process group
// named $starter.
std::string StartStarter(const Setup& setup, const std::string& run) {
  if (setup.starter == nullptr) {
    return "starter=; ";
  }
  const std::string socket = run + "/fcgiwrap.sock";
  return std::string("rm -f ") + socket + "; setsid " +
         (geteuid() == 0 ? "setpriv --reuid www-data --regid www-data --init-groups " : "") +
         setup.starter + socket + " & starter=$!; while ! test -S " + socket +
         "; do sleep 0.01; done; ";
}

// Lines for a port of Apache with HTTPS.
constexpr char kTls[] =
    "LoadModule ssl_module /usr/lib/apache2/modules/mod_ssl.so\nListen 127.0.0.1:@TLS_PORT@\n"
    "<VirtualHost 127.0.0.1:@TLS_PORT@>\nSSLEngine on\nSSLCertificateFile @PEM@\n"
    "</VirtualHost>\n";

sockaddr_in LoopbackAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// A port that is free now.  Where another process takes it before the server
// does, the server is started again on another one.
std::uint16_t FreePort() {
  std::uint16_t port = 0;
  close(ListenOnLoopback(port));
  return port;
}

void Replace(std::string& text, const std::string& word, const std::string& value) {
  for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += value.size()) {
    text.replace(at, word.size(), value);
  }
}

void Parse(const std::string& raw, HttpResponse& response) {
  const std::size_t head_end = raw.find("\r\n\r\n");
  if (raw.rfind("HTTP/1.", 0) != 0 || head_end == std::string::npos) {
    return;
  }
  response.status = std::atoi(raw.c_str() + raw.find(' '));
  std::size_t position = raw.find("\r\n") + 2;
  while (position < head_end) {
    const std::size_t line_end = raw.find("\r\n", position);
    response.header_lines.push_back(raw.substr(position, line_end - position));
    position = line_end + 2;
  }
  response.body = raw.substr(head_end + 4);
}

}  // namespace

int ListenOnLoopback(std::uint16_t& port) {
  sockaddr_in address = LoopbackAddress(0);
  socklen_t size = sizeof address;
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listener, 8) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  port = ntohs(address.sin_port);
  return listener;
}

std::vector<std::string> HttpResponse::Headers(const std::string& name) const {
  std::vector<std::string> values;
  for (const std::string& line : header_lines) {
    if (strncasecmp(line.c_str(), (name + ": ").c_str(), name.size() + 2) == 0) {
      values.push_back(line.substr(name.size() + 2));
    }
  }
  return values;
}

WebServer::WebServer(ServerKind kind, const std::string& pem) {
  for (int attempt = 0; attempt < 3; ++attempt) {
    if (Start(kind, pem)) {
      return;
    }
    Stop();
  }
  const std::string run = root_.RunDirectory();
  throw std::runtime_error("the server does not start: " + ReadFile(run + "/server.out") +
                           ReadFile(run + "/error.log"));
}

bool WebServer::Start(ServerKind kind, const std::string& pem) {
  const Setup& setup = SetupOf(kind);
  const std::string run = root_.RunDirectory();
  const std::string configuration = run + "/" + setup.configuration;
  port_ = FreePort();
  std::string text = ReadFile(std::string(E2E_SERVER_TEMPLATES "/") + setup.configuration + ".in");
  if (!pem.empty()) {
    tls_port_ = FreePort();
    text += kTls;
    Replace(text, "@TLS_PORT@", std::to_string(tls_port_));
    Replace(text, "@PEM@", pem);
  }
  Replace(text, "@ROOT@", root_.path());
  Replace(text, "@RUN@", run);
  Replace(text, "@PORT@", std::to_string(port_));
  Replace(text, "@RUN_AS@", geteuid() == 0 ? setup.run_as : "");
  std::ofstream(configuration) << text;

  // The guardian outlives this process, and cleans up after one that was killed.
  const std::string guardian =
      "trap '' INT; exec > " + run + "/server.out 2>&1; " + StartStarter(setup, run) +
      setup.command + " " + configuration +
      " & server=$!; read -r word || died=yes; kill $server; wait $server; "
      "test -z \"$starter\" || kill -- -$starter; test -z \"$died\" || rm -rf " +
      root_.path();
  guardian_ = popen(guardian.c_str(), "we");
  // Every server writes its process id once it listens.
  return guardian_ != nullptr &&
         WaitUntil([&run] { return !ReadFile(run + "/server.pid").empty(); },
                   std::chrono::seconds(10)) &&
         Send("HEAD", "/").status != 0;
}

void WebServer::Stop() {
  if (guardian_ != nullptr) {
    std::fputs("stop\n", guardian_);
    pclose(guardian_);
    guardian_ = nullptr;
  }
}

std::vector<std::string> WebServer::Programs() const {
  std::vector<std::string> programs;
  namespace fs = std::filesystem;
  for (const auto& process : fs::directory_iterator("/proc")) {
    std::error_code not_ours;
    const fs::path program = fs::read_symlink(process.path() / "exe", not_ours);
    if (program.string().rfind(root_.WebAPIDirectory(), 0) == 0) {
      programs.push_back(process.path());
    }
  }
  return programs;
}

int WebServer::Connect() const {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const timeval limit{30, 0};
  setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  const sockaddr_in address = LoopbackAddress(port_);
  connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  return connection;
}

HttpResponse WebServer::SendRaw(const std::string& request, AfterRequest after,
                                const Watch& watch) const {
  const auto start = std::chrono::steady_clock::now();
  const int connection = Connect();
  // Apart, since a server that has answered already need not read the rest.
  std::thread sender([&request, connection, after] {
    send(connection, request.data(), request.size(), MSG_NOSIGNAL);
    if (after == AfterRequest::kHangUp) {
      shutdown(connection, SHUT_WR);
    }
  });
  HttpResponse response;
  std::string raw;
  char buffer[65536];
  ssize_t count;
  while ((count = recv(connection, buffer, sizeof buffer, 0)) > 0) {
    raw.append(buffer, static_cast<std::size_t>(count));
    if (watch && !watch(raw)) {
      break;
    }
  }
  response.closed = count == 0 || errno == ECONNRESET;
  shutdown(connection, SHUT_RDWR);
  sender.join();
  close(connection);
  response.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  Parse(raw, response);
  return response;
}

// The older protocol version, so that no answer comes in chunks.
HttpResponse WebServer::Send(const std::string& method, const std::string& target,
                             const std::vector<std::string>& headers,
                             const std::string& body) const {
  std::string request = method + " " + target + " HTTP/1.0\r\nHost: " + Host() + "\r\n";
  for (const std::string& line : headers) {
    request += line + "\r\n";
  }
  if (method == "POST") {
    request += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  }
  return SendRaw(request + "\r\n" + body);
}

HttpResponse WebServer::Get(const std::string& query,
                            const std::vector<std::string>& headers) const {
  return Send("GET", "/webapi/entry.cgi?" + query, headers);
}

HttpResponse WebServer::Post(const std::string& query, const std::string& form) const {
  return Send("POST", "/webapi/entry.cgi?" + query,
              {"Content-Type: application/x-www-form-urlencoded"}, form);
}

}  // namespace e2e
