#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace e2e {

// A server on the loopback interface that reads each request to its end, notes it, and
// then does with the connection what a test wants, one connection after another.
class HostileServer {
 public:
  using Answer = std::function<void(int connection)>;
  explicit HostileServer(Answer answer);
  ~HostileServer();
  HostileServer(const HostileServer&) = delete;
  HostileServer& operator=(const HostileServer&) = delete;

  std::string Host() const { return "127.0.0.1:" + std::to_string(port_); }
  // The requests so far, without header lines that every client sends.
  std::vector<std::string> requests() const;

 private:
  void Serve();
  static std::string ReadRequest(int connection);

  Answer answer_;
  int listener_;
  std::uint16_t port_;
  mutable std::mutex mutex_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

// Sends `text` if somebody is still there.
bool SendText(int connection, const std::string& text);

}  // namespace e2e
