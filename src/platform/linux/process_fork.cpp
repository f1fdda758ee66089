#include <fcntl.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "platform/process.h"

namespace {

// A stream that the host program made throw on errors must not do so here.
void Flush(std::ostream& stream) {
  try {
    stream.flush();
  } catch (...) {
  }
}

void FlushOutput() {
  Flush(std::cout);
  Flush(std::clog);
  std::fflush(nullptr);
}

// Closed descriptors are the second best: what the child opens later takes their
// numbers, but the web server's pipes are free all the same.
void DetachStreams() {
  const int null = open("/dev/null", O_RDWR);
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (null < 0) {
      close(descriptor);
    } else if (descriptor != null) {
      dup2(null, descriptor);
    }
  }
  if (null > STDERR_FILENO) {
    close(null);
  }
  // What the parent read ahead is the parent's; at its exit the child would also
  // seek back over it.
  __fpurge(stdin);
}

}  // namespace

pid_t QLIBCProcFork() {
  FlushOutput();
  const pid_t child = fork();
  if (child == 0) {
    DetachStreams();
  }
  return child;
}
