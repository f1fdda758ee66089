#include "dispatch.h"

#include <string>

#include "Arguments.h"
#include "help.h"
#include "output.h"

namespace ORBO::tool {
namespace {

const Command* FindCommand(const Command& parent, const std::string& name) {
  for (const Command* const* command = parent.commands; *command != nullptr; ++command) {
    if (name == (*command)->name) {
      return *command;
    }
  }
  return nullptr;
}

ExitCode PrintHelp(const Command& command, const std::string& path) {
  return Print(HelpText(command, path)) ? kDone : kFailed;
}

void PointToHelp(const std::string& path) { Complain("see " + path + " --help"); }

ExitCode Run(const Command& command, const std::string& path, int argc, char** argv) {
  Arguments arguments;
  std::string complaint;
  if (!arguments.Read(command, argc, argv, complaint)) {
    Complain(complaint);
    PointToHelp(path);
    return kUsage;
  }
  if (arguments.wants_help()) {
    return PrintHelp(command, path);
  }
  const ExitCode code = command.run(arguments);
  if (code == kUsage) {
    PointToHelp(path);
  }
  return code;
}

// `argv` begins with the name of `parent`, which has commands.
ExitCode Descend(const Command& parent, const std::string& path, int argc, char** argv) {
  const std::string name = argc > 1 ? argv[1] : "";
  if (name == "--help" || name == "-h") {
    return PrintHelp(parent, path);
  }
  if (name == "--version" && path == parent.name) {
    return Print("webapi " WEBAPI_VERSION "\n") ? kDone : kFailed;
  }
  const Command* const command = FindCommand(parent, name);
  if (command == nullptr) {
    Complain(name.empty()          ? "expected a command"
             : name.front() == '-' ? "unknown option " + name
                                   : "unknown command " + name);
    PointToHelp(path);
    return kUsage;
  }
  const std::string below = path + " " + command->name;
  return command->commands != nullptr ? Descend(*command, below, argc - 1, argv + 1)
                                      : Run(*command, below, argc - 1, argv + 1);
}

}  // namespace

ExitCode Dispatch(const Command& root, int argc, char** argv) {
  return Descend(root, root.name, argc, argv);
}

}  // namespace ORBO::tool
