#pragma once

namespace ORBO::tool {

class Arguments;

// What the process ends with.
enum ExitCode : int {
  kDone = 0,
  kFailed = 1,  // not possible, or not found
  kUsage = 2,   // the command line is wrong; nothing was done
};

struct Option {
  const char* name;         // without the dashes
  const char* value;        // what its value is called in the help; null for a switch
  const char* description;  // a line for the help
};

// A command, as a row of the tables that the program is made of.  It either has
// commands of its own below it or runs.
struct Command {
  const char* name;
  const char* summary;   // a line without a full stop
  const char* operands;  // as in the usage line; "" for none
  int fewest_operands;
  int most_operands;      // negative for any number
  const Option* options;  // ends with a null name; "--help" goes without saying
  const char* details;    // paragraphs and examples for the help; may be ""
  ExitCode (*run)(const Arguments& arguments);
  const Command* const* commands;  // ends with null; null for a command that runs
};

inline constexpr int kAnyNumber = -1;

// The option of every command that lists.
inline constexpr Option kJsonOption = {"json", nullptr, "print one JSON document, for programs"};
inline constexpr Option kNoMoreOptions = {nullptr, nullptr, nullptr};

extern const Command kSession;
extern const Command kSessionOpen;
extern const Command kSessionList;
extern const Command kSessionShow;
extern const Command kSessionClose;
extern const Command kToken;
extern const Command kTokenCreate;
extern const Command kTokenList;
extern const Command kTokenRevoke;
extern const Command kKey;
extern const Command kKeyList;
extern const Command kKeyRotate;
extern const Command kEncrypt;
extern const Command kPasswd;
extern const Command kCall;
extern const Command kList;
extern const Command kNew;
extern const Command kTask;
extern const Command kTaskList;
extern const Command kTaskStatus;
extern const Command kTaskWatch;
extern const Command kTaskStop;

}  // namespace ORBO::tool
