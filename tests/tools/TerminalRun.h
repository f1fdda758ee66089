#pragma once

#include <string>
#include <vector>

#include "util/Descriptor.h"

namespace tools {

// The command at a terminal of its own.  A process between this one and the command
// leads the terminal's session: when a leader ends the kernel resets its terminal, and
// what the command left of it could not be seen.
class TerminalRun {
 public:
  explicit TerminalRun(const std::vector<std::string>& arguments);
  ~TerminalRun();

  TerminalRun(const TerminalRun&) = delete;
  TerminalRun& operator=(const TerminalRun&) = delete;

  // Waits until the terminal has shown `text` behind what was waited for before.
  // False if it did not.
  bool WaitFor(const std::string& text);
  void Type(const std::string& text);
  bool HasEcho() const;

  // Waits for the end and reads what is still shown.  The exit code; negative if a
  // signal ended the command.
  int Finish();
  // All that the terminal has shown.
  const std::string& shown() const { return shown_; }

 private:
  bool ReadMore();

  ORBO::Descriptor terminal_;
  // To the leader: gives the exit code, and keeps it waiting while it is open.
  ORBO::Descriptor leader_channel_;
  int leader_ = -1;
  std::string shown_;
  std::size_t seen_ = 0;
};

}  // namespace tools
