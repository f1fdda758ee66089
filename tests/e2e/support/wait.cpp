#include "support/wait.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

namespace e2e {

bool WaitForChange(const std::string& directory, const std::function<bool()>& done,
                   std::chrono::milliseconds limit, int process_descriptor) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + limit;
  const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  inotify_add_watch(watch, directory.c_str(), IN_CREATE | IN_MODIFY | IN_MOVED_TO);
  // Only now, so that no change between the question and the watch is missed.
  bool result = done();
  while (!result) {
    const auto rest =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd descriptors[] = {{watch, POLLIN, 0}, {process_descriptor, POLLIN, 0}};
    if (rest.count() <= 0 || poll(descriptors, 2, static_cast<int>(rest.count())) <= 0 ||
        descriptors[1].revents != 0) {
      result = done();
      break;
    }
    char events[4096];
    while (read(watch, events, sizeof events) > 0) {
    }
    result = done();
  }
  close(watch);
  return result;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace e2e
