#include "support/HostileServer.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace e2e {

HostileServer::HostileServer(Answer answer)
    : answer_(std::move(answer)), listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      listen(listener_, 8) != 0 ||
      getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  port_ = ntohs(address.sin_port);
  thread_ = std::thread([this] { Serve(); });
}

HostileServer::~HostileServer() {
  shutdown(listener_, SHUT_RDWR);
  thread_.join();
  close(listener_);
}

void HostileServer::Serve() {
  int connection;
  while ((connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
    const timeval limit{20, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    const std::string request = ReadRequest(connection);
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      requests_.push_back(request);
    }
    answer_(connection);
    close(connection);
  }
}

std::string HostileServer::ReadRequest(int connection) {
  std::string request;
  char buffer[65536];
  std::size_t size = std::string::npos;
  while (request.size() < size) {
    const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
    if (count <= 0) {
      return request + "[end]";
    }
    request.append(buffer, static_cast<std::size_t>(count));
    const std::size_t head_end = request.find("\r\n\r\n");
    if (head_end != std::string::npos && size == std::string::npos) {
      const std::size_t length = request.find("Content-Length: ");
      size = head_end + 4 + std::strtoul(request.c_str() + length + 16, nullptr, 10);
    }
  }
  for (const char* name : {"Host", "Accept"}) {
    const std::size_t at = request.find(std::string("\r\n") + name + ": ");
    request.erase(at, request.find("\r\n", at + 2) - at);
  }
  return request;
}

std::vector<std::string> HostileServer::requests() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return requests_;
}

bool SendText(int connection, const std::string& text) {
  return send(connection, text.data(), text.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(text.size());
}

}  // namespace e2e
