#pragma once

#include <string>
#include <vector>

#include "Sandbox.h"

namespace faults {

// What became of one run of the program and of everything that it started.
struct Outcome {
  int status = 0;  // as of wait(2)
  bool is_hung = false;
  std::string output;
};

// Runs `request` under `wrapper`, a command that takes the program's own as its last
// arguments (none for the program alone), with the variables `extra`, and waits for
// all its descendants.  What is not done within 20 seconds hangs and is killed.
Outcome Run(const Sandbox& sandbox, const Request& request, const std::vector<std::string>& wrapper,
            const std::vector<std::string>& extra);

enum class Verdict {
  kSuccess,   // the request's own answer
  kError,     // a well-formed answer that says that the call failed
  kNoAnswer,  // nothing was written, and the program ended by itself
  kCut,       // a download that broke off; the client sees so by its length
  kBroken,    // anything else
};

// Judges a run; `reason` says what is broken.
Verdict Judge(const Outcome& outcome, std::string& reason);

}  // namespace faults
