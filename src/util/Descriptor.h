#pragma once

#include <unistd.h>

#include <utility>

namespace ORBO {

// Owns a file descriptor and closes it at the end; errno is kept.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor();

  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  // False where the descriptor is negative, as open(2) reports failure.
  bool IsOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

  // Owns `descriptor` from now on and closes what it owned before.
  void Reset(int descriptor);

  // Hands the descriptor over: the caller closes it.
  int Release() { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_;
};

}  // namespace ORBO
