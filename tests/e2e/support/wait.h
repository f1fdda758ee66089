#pragma once

#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

namespace e2e {

// Waits until `done` holds; false when the time is over first.
inline bool WaitUntil(const std::function<bool()>& done, std::chrono::seconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

// The content of a file; "" if it cannot be read.
inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace e2e
