#pragma once

#include <cstddef>
#include <string>

namespace ORBO {

class APIRunner;

// The process's identity as a runner shows it: command line, kernel task name
// and log identity all tell which call is being served.
class APIRunnerPrivate {
 public:
  // Reads the program's name from its command line.
  explicit APIRunnerPrivate(APIRunner* owner);
  ~APIRunnerPrivate();

  // Not copyable: each stands for one runner that lives.
  APIRunnerPrivate(const APIRunnerPrivate&) = delete;
  APIRunnerPrivate& operator=(const APIRunnerPrivate&) = delete;

  // The prefix of the log identity, and the program's own name.
  std::string& GetProcName() { return proc_name_; }
  std::string& GetOrigProcName() { return orig_proc_name_; }

  void SetArgs(int argc, char** argv);

  // Shows `name` as the command line, cut to the room of the first argument.
  // Does nothing without SetArgs.
  void SetArgv0(const std::string& name);

  // Names the process after one call.  False, with `errno` set, if the kernel
  // refuses the task name.
  bool ShowCall(const std::string& api, int version, const std::string& method);
  // Names the process after its program again, or after the call that another
  // runner was serving when this one was made.
  void ShowProgram();

 private:
  APIRunner* owner_;              // not owned
  char* argv0_ = nullptr;         // memory of the first argument, overwritten in place
  std::size_t argv0_length_ = 0;  // room there without the terminator
  std::string proc_name_;
  std::string orig_proc_name_;
  std::string outer_identity_;   // the log identity that was found; empty for none
  std::string outer_task_name_;  // the task name then
};

}  // namespace ORBO
