#pragma once

#include <string>

namespace ORBO {

// Answers of the name service that are kept for half a minute, beside the sessions:
// asking costs more than all the rest of a call, since the name service opens
// libraries, and a page makes many calls in a row.

// False if no answer to `question` is kept that is new enough.
bool RecallFact(const std::string& question, bool& fact);

// Keeps an answer for other processes of this user.  Does nothing where it cannot,
// as in a process of another user than the sessions'.
void KeepFact(const std::string& question, bool fact);

// Deletes the kept answers that are too old to count.
void SweepFacts();

// The answer to `question` that is kept, else the one that `ask` gives.
template <typename Ask>
bool CachedFact(const std::string& question, Ask ask) {
  bool fact = false;
  if (!RecallFact(question, fact)) {
    fact = ask();
    KeepFact(question, fact);
  }
  return fact;
}

}  // namespace ORBO
