#include "support/HttpExchange.h"

#include <arpa/inet.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

namespace e2e {

namespace {

constexpr double kLimitSeconds = 30;

int Connect(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    close(connection);
    return -1;
  }
  return connection;
}

std::string JoinChunks(const std::string& text) {
  std::string body;
  std::size_t position = 0;
  for (;;) {
    const std::size_t line_end = text.find("\r\n", position);
    if (line_end == std::string::npos) {
      return body + "(broken chunk)";
    }
    const std::size_t size = std::strtoul(text.c_str() + position, nullptr, 16);
    if (size == 0) {
      return body;
    }
    body += text.substr(line_end + 2, size);
    position = line_end + 2 + size + 2;
  }
}

void Parse(const std::string& raw, HttpResponse& response) {
  const std::size_t head_end = raw.find("\r\n\r\n");
  if (raw.rfind("HTTP/1.", 0) != 0 || head_end == std::string::npos) {
    return;
  }
  const char* status = raw.c_str() + raw.find(' ');
  response.status = static_cast<int>(std::strtol(status, nullptr, 10));
  std::size_t position = raw.find("\r\n") + 2;
  while (position < head_end) {
    const std::size_t line_end = raw.find("\r\n", position);
    response.header_lines.push_back(raw.substr(position, line_end - position));
    position = line_end + 2;
  }
  response.body = raw.substr(head_end + 4);
  if (!response.Headers("Transfer-Encoding").empty()) {
    response.body = JoinChunks(response.body);
  }
}

}  // namespace

std::vector<std::string> HttpResponse::Headers(const std::string& name) const {
  std::vector<std::string> values;
  for (const std::string& line : header_lines) {
    if (strncasecmp(line.c_str(), (name + ": ").c_str(), name.size() + 2) == 0) {
      values.push_back(line.substr(name.size() + 2));
    }
  }
  return values;
}

HttpResponse Exchange(std::uint16_t port, const std::string& request, AfterRequest after) {
  HttpResponse response;
  const auto start = std::chrono::steady_clock::now();
  auto elapsed = [start] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  const int connection = Connect(port);
  std::string raw;
  std::size_t sent = 0;
  while (connection >= 0 && elapsed() < kLimitSeconds) {
    const bool writing = sent < request.size();
    pollfd descriptor{connection, static_cast<short>(POLLIN | (writing ? POLLOUT : 0)), 0};
    poll(&descriptor, 1, 1000);
    if ((descriptor.revents & POLLOUT) != 0) {
      const ssize_t count = send(connection, request.data() + sent, request.size() - sent,
                                 MSG_NOSIGNAL | MSG_DONTWAIT);
      // A server that has answered already need not read the rest.
      sent = count > 0 ? sent + static_cast<std::size_t>(count) : request.size();
      if (sent == request.size() && after == AfterRequest::kHangUp) {
        shutdown(connection, SHUT_WR);
      }
    }
    if ((descriptor.revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
      char buffer[65536];
      const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
      if (count <= 0) {
        response.closed = true;
        break;
      }
      raw.append(buffer, static_cast<std::size_t>(count));
    }
  }
  response.seconds = elapsed();
  close(connection);
  Parse(raw, response);
  return response;
}

}  // namespace e2e
