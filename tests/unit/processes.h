#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ORBO {

// Runs `work`, which gets a number from 0, in so many processes at the same time.  The
// sum of what it gives, from 0 to 255 each.
template <typename Work>
int SumOfProcesses(int count, Work work) {
  for (int i = 0; i < count; ++i) {
    if (fork() == 0) {
      _exit(work(i));
    }
  }
  int sum = 0;
  for (int status = 0; wait(&status) > 0;) {
    EXPECT_TRUE(WIFEXITED(status));
    sum += WEXITSTATUS(status);
  }
  return sum;
}

}  // namespace ORBO
