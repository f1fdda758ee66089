// faults STAGE COMMAND PRELOAD [--quick]
//
// Makes every call of some kind fail, one after another, while canonical requests are
// served, and kills the programs that write state at every system call.  Prints two
// tables; ends with 1 when a run was neither answered nor ended cleanly.

#include <sys/prctl.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "Sandbox.h"
#include "run.h"

namespace faults {
namespace {

namespace fs = std::filesystem;

// A kind of call that is made to fail.
struct Fault {
  const char* name;
  const char* calls;  // strace's names of the system calls; null for a function
  const char* error;
  bool may_cut;  // whether a download may break off by it
};

constexpr Fault kFaults[] = {
    {"malloc", nullptr, nullptr, false},
    {"open", "open,openat", "EMFILE", false},
    {"write", "write,pwrite64,writev,sendfile,splice", "ENOSPC", true},
    {"rename", "rename,renameat,renameat2", "EIO", false},
    {"fork", "fork,vfork,clone,clone3", "EAGAIN", false},
    {"dlopen", nullptr, nullptr, false},
    {"connect", "connect", "ECONNREFUSED", false},
    {"send", "sendto", "ECONNRESET", false},
    {"receive", "recvfrom", "ECONNRESET", false},
};

constexpr char kNameCharacters[] = "abcdefghijklmnopqrstuvwxyz0123456789_";
constexpr int kMostCalls = 100000;  // of one kind in one request

struct Count {
  int faults = 0;
  int answered = 0;
  int refused = 0;
  int silent = 0;
  int cut = 0;
  int broken = 0;
};

bool Contains(const std::string& path, const char* text) {
  std::ifstream file(path);
  const std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  return content.find(text) != std::string::npos;
}

// Runs `request` with the `at`th call of the kind failing.  False when there was none.
bool RunWithFault(const Sandbox& sandbox, const Request& request, const Fault& fault, int at,
                  const std::string& preload, Outcome& outcome) {
  const std::string log = sandbox.Path("/fault");
  fs::remove(log);
  if (fault.calls == nullptr) {
    outcome = Run(sandbox, request, {},
                  {"LD_PRELOAD=" + preload, std::string("FAULT_CALL=") + fault.name,
                   "FAULT_AT=" + std::to_string(at), "FAULT_FILE=" + log});
    return fs::exists(log);
  }
  const std::string calls = fault.calls;
  outcome = Run(sandbox, request,
                {"strace", "-f", "-qq", "-o", log, "-e", "trace=" + calls, "-e",
                 "inject=" + calls + ":error=" + fault.error + ":when=" + std::to_string(at)},
                {});
  return Contains(log, "(INJECTED)");
}

void Add(const Request& request, const Fault& fault, int at, const Outcome& outcome,
         std::string state, Count& count) {
  std::string reason;
  Verdict verdict = Judge(outcome, reason);
  if (verdict == Verdict::kCut && !fault.may_cut) {
    verdict = Verdict::kBroken;
    reason = "cut";
  }
  if (verdict != Verdict::kBroken && !state.empty()) {
    verdict = Verdict::kBroken;
    reason = std::move(state);
  }
  ++count.faults;
  count.answered += verdict == Verdict::kSuccess ? 1 : 0;
  count.refused += verdict == Verdict::kError ? 1 : 0;
  count.silent += verdict == Verdict::kNoAnswer ? 1 : 0;
  count.cut += verdict == Verdict::kCut ? 1 : 0;
  count.broken += verdict == Verdict::kBroken ? 1 : 0;
  if (verdict == Verdict::kBroken) {
    std::fprintf(stderr, "%s, %s %d: %s\n", request.name.c_str(), fault.name, at, reason.c_str());
  }
}

Count Try(const Sandbox& sandbox, const Request& request, const Fault& fault, int step,
          const std::string& preload) {
  Count count;
  for (int at = 1; at < kMostCalls; at += step) {
    sandbox.Clear();
    Outcome outcome;
    if (!RunWithFault(sandbox, request, fault, at, preload, outcome)) {
      break;
    }
    Add(request, fault, at, outcome, sandbox.FindFault(true), count);
  }
  return count;
}

// Serves `request` undisturbed; throws when it is not, since nothing that follows would
// mean anything.
void Expect(const Sandbox& sandbox, const Request& request) {
  std::string reason;
  const Outcome outcome = Run(sandbox, request, {}, {});
  if (Judge(outcome, reason) != Verdict::kSuccess) {
    throw std::runtime_error(request.name + " is not served: " + reason + outcome.output);
  }
}

int TryFaults(const Sandbox& sandbox, const std::string& preload, int malloc_step) {
  int broken = 0;
  std::puts(
      "| Request | Fails | Calls | Answered | Answered by an error | No answer, clean end | "
      "Download cut | Broken |\n|---|---|---|---|---|---|---|---|");
  for (const Request& request :
       {sandbox.Plain(), sandbox.Authenticated(), sandbox.Compound(), sandbox.TaskStart(),
        sandbox.Upload(), sandbox.Download(), sandbox.Relayed(), sandbox.RelayedUpload()}) {
    sandbox.Clear();
    Expect(sandbox, request);
    for (const Fault& fault : kFaults) {
      const int step = std::strcmp(fault.name, "malloc") == 0 ? malloc_step : 1;
      const Count count = Try(sandbox, request, fault, step, preload);
      if (count.faults == 0 && &fault != kFaults) {
        continue;
      }
      std::printf("| %s | %s | %d | %d | %d | %d | %d | %d |\n", request.name.c_str(), fault.name,
                  count.faults, count.answered, count.refused, count.silent, count.cut,
                  count.broken);
      std::fflush(stdout);
      // Every request allocates: else nothing has been disturbed.
      broken += count.faults == 0 ? 1 : count.broken;
    }
  }
  return broken;
}

// The names of the system calls that serving `request` makes.
std::set<std::string> SystemCalls(const Sandbox& sandbox, const Request& request) {
  const std::string log = sandbox.Path("/fault");
  Run(sandbox, request, {"strace", "-f", "-qq", "-o", log}, {});
  std::set<std::string> names;
  std::ifstream file(log);
  for (std::string process, call; file >> process && std::getline(file >> std::ws, call);) {
    // "PID name(arguments) = result", where several blanks may follow a short id; other
    // lines tell of signals and resumed calls.
    const std::string name = call.substr(0, call.find('('));
    if (!name.empty() && name.find_first_not_of(kNameCharacters) == std::string::npos) {
      names.insert(name);
    }
  }
  return names;
}

// Kills the program, and each process that it has started, at its `at`th call of that
// name.  False when all ended before.
bool RunKilled(const Sandbox& sandbox, const Request& request, const std::string& call, int at) {
  const std::string log = sandbox.Path("/fault");
  Run(sandbox, request,
      {"strace", "-f", "-qq", "-o", log, "-e", "trace=" + call, "-e",
       "inject=" + call + ":signal=KILL:when=" + std::to_string(at)},
      {});
  return Contains(log, "+++ killed by SIGKILL");
}

// What is wrong after a kill: with the state, or with the same request made again.
std::string FaultAfterKill(const Sandbox& sandbox, const Request& request) {
  std::string reason = sandbox.FindFault(false);
  sandbox.Clear();
  if (reason.empty()) {
    const Outcome next = Run(sandbox, request, {}, {});
    if (Judge(next, reason) != Verdict::kSuccess) {
      reason = "not served next: " + reason + next.output;
    }
  }
  sandbox.Clear();
  return reason;
}

int TryKills(const Sandbox& sandbox) {
  int broken = 0;
  std::puts(
      "\n| Writer | System calls killed at | Old or new state, and served next | Broken |\n"
      "|---|---|---|---|");
  for (const Request& request :
       {sandbox.Counted(), sandbox.TaskStart(), sandbox.Login(), sandbox.Upload()}) {
    int kills = 0;
    int bad = 0;
    sandbox.Clear();
    Expect(sandbox, request);
    for (const std::string& call : SystemCalls(sandbox, request)) {
      for (int at = 1; at < kMostCalls && RunKilled(sandbox, request, call, at); ++at) {
        const std::string reason = FaultAfterKill(sandbox, request);
        if (!reason.empty()) {
          std::fprintf(stderr, "%s, killed at %s %d: %s\n", request.name.c_str(), call.c_str(), at,
                       reason.c_str());
        }
        ++kills;
        bad += reason.empty() ? 0 : 1;
      }
    }
    std::printf("| %s | %d | %d | %d |\n", request.name.c_str(), kills, kills - bad, bad);
    std::fflush(stdout);
    // Where nothing was killed nothing is proved.
    broken += kills == 0 ? 1 : bad;
  }
  return broken;
}

}  // namespace
}  // namespace faults

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fputs("usage: faults STAGE COMMAND PRELOAD [--quick]\n", stderr);
    return 2;
  }
  // What a request leaves running comes to this process, which waits for it.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  try {
    const faults::Sandbox sandbox(argv[1], argv[2]);
    const bool is_quick = argc > 4 && std::strcmp(argv[4], "--quick") == 0;
    const int broken =
        faults::TryFaults(sandbox, argv[3], is_quick ? 7 : 1) + faults::TryKills(sandbox);
    return broken == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "faults: %s\n", error.what());
    return 2;
  }
}
