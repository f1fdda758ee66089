#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "support/WebServer.h"

namespace e2e {

// What a server sends: `text` so many times, with a pause before each.  With 0 times it
// waits until the client hangs up.
struct Behaviour {
  std::string text;
  int times = 1;
  unsigned pause = 0;  // microseconds
};

// A server on the loopback interface that notes each request and then behaves so.
class HostileServer {
 public:
  explicit HostileServer(const Behaviour& behaviour) : listener_(ListenOnLoopback(port_)) {
    thread_ = std::thread([this, behaviour] {
      for (int client; (client = accept(listener_, nullptr, nullptr)) >= 0; close(client)) {
        std::string request;
        while (!IsWhole(request) && Receive(client, request)) {
        }
        requests.push_back(request);
        while (behaviour.times == 0 && Receive(client, request)) {
        }
        for (int sent = 0; sent < behaviour.times; ++sent) {
          usleep(behaviour.pause);
          send(client, behaviour.text.data(), behaviour.text.size(), MSG_NOSIGNAL);
        }
      }
    });
  }
  ~HostileServer() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }

  std::string Host() const { return "127.0.0.1:" + std::to_string(port_); }

  // To be read once the last one has been answered.
  std::vector<std::string> requests;

 private:
  static bool Receive(int client, std::string& request) {
    char buffer[65536];
    const ssize_t count = recv(client, buffer, sizeof buffer, 0);
    request.append(buffer, static_cast<std::size_t>(count < 0 ? 0 : count));
    return count > 0;
  }
  static bool IsWhole(const std::string& request) {
    const std::size_t length = request.find("Content-Length: ");
    const std::size_t head = request.find("\r\n\r\n");
    return head != std::string::npos &&
           request.size() >= head + 4 + std::strtoul(request.c_str() + length + 16, nullptr, 10);
  }

  std::uint16_t port_ = 0;
  int listener_;
  std::thread thread_;
};

}  // namespace e2e
