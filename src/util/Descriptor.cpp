#include "util/Descriptor.h"

#include <cerrno>

namespace ORBO {
namespace {

void Close(int descriptor) {
  if (descriptor >= 0) {
    const int saved_errno = errno;
    close(descriptor);
    errno = saved_errno;
  }
}

}  // namespace

Descriptor::~Descriptor() { Close(descriptor_); }

void Descriptor::Reset(int descriptor) {
  Close(descriptor_);
  descriptor_ = descriptor;
}

}  // namespace ORBO
