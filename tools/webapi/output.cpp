#include "output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/linux/platform_conf.h"
#include "printable.h"
#include "util/Descriptor.h"
#include "util/json_text.h"

namespace ORBO::tool {

bool Print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) {
    return true;
  }
  Complain(std::string("cannot write to the standard output: ") + std::strerror(errno));
  return false;
}

ExitCode PrintJson(const Json::Value& value) {
  return Print(JSON::ToText(value) + "\n") ? kDone : kFailed;
}

void Complain(const std::string& text) {
  std::fprintf(stderr, "webapi: %s\n", Printable(text).c_str());
}

ExitCode ComplainOfUsage(const std::string& text) {
  Complain(text);
  return kUsage;
}

ExitCode ComplainOfFailure(const std::string& action, int error, MayRun may_run) {
  // The operations say so where the module is missing that does the cryptography.
  const char* const reason = error == ENOSYS
                                 ? "a module cannot be used; the system log has the reason"
                                 : std::strerror(error);
  Complain("cannot " + action + ": " + reason);
  if (error == EACCES || error == EPERM || error == EROFS) {
    const std::string user = PlatformSetting("service_user");
    const std::string or_service =
        " or as the user that the CGI programs run as" + (user.empty() ? "" : ", " + user);
    Complain("run this command as root" + (may_run == MayRun::kRootOnly ? "" : or_service));
  }
  return kFailed;
}

bool MayRead(const std::string& path, const std::string& action) {
  const Descriptor directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.IsOpen() || errno == ENOENT) {
    return true;
  }
  ComplainOfFailure(action, errno);
  return false;
}

bool HasColours() {
  const char* const refused = std::getenv("NO_COLOR");
  return (refused == nullptr || *refused == '\0') && isatty(STDOUT_FILENO) == 1;
}

}  // namespace ORBO::tool
