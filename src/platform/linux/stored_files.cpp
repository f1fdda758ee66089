#include "platform/linux/stored_files.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "platform/linux/removal_signals.h"

namespace ORBO::StoredFiles {
namespace {

// A signal's handler reads the list at any time: no path is ever half there.
std::array<std::atomic<char*>, kMost> g_paths;
pid_t g_process = 0;  // whose files they are

void Forget(std::atomic<char*>& path) { std::free(path.exchange(nullptr)); }

void ForgetAll() {
  for (std::atomic<char*>& path : g_paths) {
    Forget(path);
  }
}

std::atomic<char*>* Find(const std::string& path) {
  for (std::atomic<char*>& known : g_paths) {
    if (known != nullptr && path == known.load()) {
      return &known;
    }
  }
  return nullptr;
}

// Called by signals' handlers: makes nothing but system calls.
void UnlinkAll() {
  if (g_process != getpid()) {
    return;
  }
  for (const std::atomic<char*>& path : g_paths) {
    if (path != nullptr) {
      unlink(path);
    }
  }
}

// Takes the list over, in a process of its own from that of a parent.
void Begin() {
  static bool is_registered = false;
  if (g_process == getpid()) {
    return;
  }
  ForgetAll();
  g_process = getpid();
  if (!is_registered) {
    is_registered = std::atexit(RemoveAll) == 0;
  }
  TakeSignals(UnlinkAll);
}

}  // namespace

bool Add(const std::string& path) {
  Begin();
  for (std::atomic<char*>& free : g_paths) {
    if (free == nullptr) {
      free = strdup(path.c_str());
      return free != nullptr;
    }
  }
  return false;
}

bool Has(const std::string& path) { return g_process == getpid() && Find(path) != nullptr; }

void Remove(const std::string& path) {
  if (std::atomic<char*>* const known = Find(path)) {
    unlink(path.c_str());
    Forget(*known);
  }
}

void RemoveAll() {
  // Nearly every process stores nothing, and is spared the question who it is.
  if (g_process == 0 || g_process != getpid()) {
    return;
  }
  UnlinkAll();
  GiveSignalsBack();
  ForgetAll();
  g_process = 0;
}

}  // namespace ORBO::StoredFiles
