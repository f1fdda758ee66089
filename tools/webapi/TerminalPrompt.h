#pragma once

#include <termios.h>

#include <string>

#include "util/Descriptor.h"

namespace ORBO::tool {

// Asks for secrets at the terminal that controls this process, without showing what
// is typed.  The terminal is as before when this object is gone, and also where a
// signal ends the process meanwhile.  One object at a time.
class TerminalPrompt {
 public:
  TerminalPrompt();
  ~TerminalPrompt();

  TerminalPrompt(const TerminalPrompt&) = delete;
  TerminalPrompt& operator=(const TerminalPrompt&) = delete;

  // False if there is no such terminal.
  bool IsOpen() const { return is_silent_; }

  // Shows `prompt` and reads a line of at most `limit` bytes, without its end.
  // False at the end of the input, for a longer line, and when a signal ends it.
  bool Ask(const std::string& prompt, std::size_t limit, std::string& line);

 private:
  Descriptor terminal_;
  termios before_ = {};
  bool is_silent_ = false;
};

}  // namespace ORBO::tool
