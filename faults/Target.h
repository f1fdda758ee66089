#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace faults {

// Another server, on the loopback interface, for relayed requests: it answers all of
// them at once with success, and notes whether uploads arrive.
class Target {
 public:
  // Throws std::exception where there is no free port.
  Target();
  ~Target();
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  std::string Url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

  // Whether, since this was asked last, a call has come that belongs to an upload, but
  // the whole upload has not come before it.
  bool MissesUpload() const;

 private:
  void Serve();
  void Note(const std::string& request);

  int listener_;
  std::uint16_t port_ = 0;
  bool is_upload_kept_ = false;
  mutable std::atomic<bool> misses_upload_{false};
  std::thread thread_;
};

}  // namespace faults
