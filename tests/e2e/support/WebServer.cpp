#include "support/WebServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

// The header of this C library does not declare C linkage itself.
extern "C" {
#include <sys/pidfd.h>
}

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "support/wait.h"

namespace e2e {

namespace {

struct Setup {
  const char* program;
  const char* configuration;
  const char* foreground;
  const char* run_as;  // lines for a server that root starts
};

const Setup& SetupOf(ServerKind kind) {
  static const Setup kLighttpd = {E2E_LIGHTTPD, "lighttpd.conf", "-D",
                                  "server.username = \"www-data\"\n"
                                  "server.groupname = \"www-data\"\n"};
  static const Setup kApache = {E2E_APACHE, "apache.conf", "-DFOREGROUND",
                                "User www-data\nGroup www-data\n"};
  return kind == ServerKind::kLighttpd ? kLighttpd : kApache;
}

// A port that is free now.  Another process may take it before the server does;
// the server then ends at once and is started again on another one.
std::uint16_t FreePort() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  const int probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(probe, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  close(probe);
  return ntohs(address.sin_port);
}

void Replace(std::string& text, const std::string& word, const std::string& value) {
  for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; at += value.size()) {
    text.replace(at, word.size(), value);
  }
}

void RunServer(const Setup& setup, const std::string& run_directory) {
  const int log =
      open((run_directory + "/server.out").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
  const int null = open("/dev/null", O_RDONLY);
  dup2(null, 0);
  dup2(log, 1);
  dup2(log, 2);
  const std::string configuration = run_directory + "/" + setup.configuration;
  execl(setup.program, setup.program, setup.foreground, "-f", configuration.c_str(),
        static_cast<char*>(nullptr));
  _exit(127);
}

// The guardian's whole life: starts the server and stops it when the test ends,
// in whatever way it ends.
[[noreturn]] void Guard(const Setup& setup, const TestRoot& root, int control) {
  setsid();
  const pid_t server = fork();
  if (server == 0) {
    RunServer(setup, root.RunDirectory());
  }
  const int alive = pidfd_open(server, 0);
  pollfd descriptors[] = {{alive, POLLIN, 0}, {control, POLLIN, 0}};
  poll(descriptors, 2, -1);
  if (descriptors[0].revents == 0) {
    kill(server, SIGTERM);
    if (poll(descriptors, 1, 5000) <= 0) {
      kill(server, SIGKILL);
    }
  }
  waitpid(server, nullptr, 0);
  char word;
  const bool test_died = descriptors[1].revents != 0 && recv(control, &word, 1, 0) <= 0;
  if (test_died) {
    std::error_code ignored;
    std::filesystem::remove_all(root.path(), ignored);
  }
  _exit(0);
}

}  // namespace

WebServer::WebServer(ServerKind kind) {
  for (int attempt = 0; attempt < 5; ++attempt) {
    if (Start(kind)) {
      return;
    }
    Stop();
  }
  throw std::runtime_error(
      "the server does not start: " + ReadFile(root_.RunDirectory() + "/server.out") +
      ReadFile(root_.RunDirectory() + "/error.log"));
}

WebServer::~WebServer() { Stop(); }

bool WebServer::Start(ServerKind kind) {
  const Setup& setup = SetupOf(kind);
  const std::string run = root_.RunDirectory();
  port_ = FreePort();
  std::string text = ReadFile(std::string(E2E_SERVER_TEMPLATES "/") + setup.configuration + ".in");
  Replace(text, "@ROOT@", root_.path());
  Replace(text, "@RUN@", run);
  Replace(text, "@PORT@", std::to_string(port_));
  Replace(text, "@RUN_AS@", geteuid() == 0 ? setup.run_as : "");
  std::ofstream(run + "/" + setup.configuration) << text;

  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    return false;
  }
  guardian_ = fork();
  if (guardian_ == 0) {
    close(ends[1]);
    Guard(setup, root_, ends[0]);
  }
  close(ends[0]);
  control_ = ends[1];

  // Both servers write their process id once they listen.
  const int alive = pidfd_open(guardian_, 0);
  const bool listening = WaitForChange(
      run, [&run] { return !ReadFile(run + "/server.pid").empty(); }, std::chrono::seconds(20),
      alive);
  close(alive);
  return listening && SendRaw("HEAD / HTTP/1.0\r\n\r\n").status != 0;
}

void WebServer::Stop() {
  if (guardian_ < 0) {
    return;
  }
  // A word rather than the end of the stream alone: that comes when the test dies,
  // and another server's guardian may hold a copy of this end.
  send(control_, "q", 1, MSG_NOSIGNAL);
  waitpid(guardian_, nullptr, 0);
  close(control_);
  guardian_ = -1;
}

bool WebServer::RunsPrograms() const {
  namespace fs = std::filesystem;
  for (const auto& process : fs::directory_iterator("/proc")) {
    std::error_code not_ours;
    const fs::path program = fs::read_symlink(process.path() / "exe", not_ours);
    if (program.string().rfind(root_.WebAPIDirectory(), 0) == 0) {
      return true;
    }
  }
  return false;
}

std::string WebServer::Host() const { return "127.0.0.1:" + std::to_string(port_); }

HttpResponse WebServer::Send(const std::string& method, const std::string& target,
                             const std::vector<std::string>& headers,
                             const std::string& body) const {
  std::string request = method + " " + target + " HTTP/1.1\r\nHost: " + Host() + "\r\n";
  for (const std::string& line : headers) {
    request += line + "\r\n";
  }
  if (method == "POST" || !body.empty()) {
    request += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  }
  return SendRaw(request + "Connection: close\r\n\r\n" + body);
}

HttpResponse WebServer::Get(const std::string& query,
                            const std::vector<std::string>& headers) const {
  return Send("GET", "/webapi/entry.cgi?" + query, headers);
}

HttpResponse WebServer::Post(const std::string& query, const std::string& form) const {
  return Send("POST", "/webapi/entry.cgi" + (query.empty() ? "" : "?" + query),
              {"Content-Type: application/x-www-form-urlencoded"}, form);
}

}  // namespace e2e
