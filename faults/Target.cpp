#include "Target.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace faults {
namespace {

constexpr char kAnswer[] =
    "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 16\r\n"
    "Connection: close\r\n\r\n{\"success\":true}";
constexpr char kLength[] = "Content-Length: ";

bool IsWhole(const std::string& request) {
  const std::size_t length = request.find(kLength);
  const std::size_t head_end = request.find("\r\n\r\n");
  return head_end != std::string::npos && length < head_end &&
         request.size() ==
             head_end + 4 +
                 std::strtoul(request.c_str() + length + sizeof kLength - 1, nullptr, 10);
}

// What the client sends until it waits for the answer or hangs up.
std::string Receive(int client) {
  std::string request;
  char buffer[4096];
  ssize_t count = 0;
  while (!IsWhole(request) && (count = recv(client, buffer, sizeof buffer, 0)) > 0) {
    request.append(buffer, static_cast<std::size_t>(count));
  }
  return request;
}

}  // namespace

Target::Target() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listener_, SOMAXCONN) != 0 ||
      getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread(&Target::Serve, this);
}

Target::~Target() {
  shutdown(listener_, SHUT_RDWR);
  thread_.join();
  close(listener_);
}

bool Target::MissesUpload() const {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port_);
  // Requests are noted in turn: once this one is over so are those before it.
  const int flush = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connect(flush, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("the target is gone");
  }
  shutdown(flush, SHUT_WR);
  char byte = 0;
  while (recv(flush, &byte, 1, 0) > 0) {
  }
  close(flush);
  return misses_upload_.exchange(false);
}

void Target::Note(const std::string& request) {
  if (request.empty()) {
    is_upload_kept_ = false;
  } else if (!IsWhole(request)) {
    return;
  } else if (request.find("multipart/form-data") != std::string::npos) {
    is_upload_kept_ = true;
  } else if (request.find("method=upload") != std::string::npos) {
    misses_upload_ = misses_upload_ || !is_upload_kept_;
    is_upload_kept_ = false;
  }
}

void Target::Serve() {
  for (int client = 0; (client = accept(listener_, nullptr, nullptr)) >= 0; close(client)) {
    Note(Receive(client));
    send(client, kAnswer, sizeof kAnswer - 1, MSG_NOSIGNAL);
  }
}

}  // namespace faults
