#include "testing/SystemTree.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "platform/linux/key_name.h"
#include "platform/linux/session_store.h"
#include "platform/linux/session_text.h"
#include "testing/system_files.h"
#include "util/Descriptor.h"
#include "util/paths.h"
#include "util/read_file.h"
#include "util/write_file.h"

namespace ORBO {
namespace {

namespace fs = std::filesystem;

constexpr char kSessions[] = "/run/orbo/sessions";
// The form of a session's id, which the store asks for.
constexpr char kIdLetter = 's';
constexpr std::size_t kIdBytes = 32;

bool EndsWith(const std::string& text, std::string_view end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool MakeDirectory(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path, error);
  errno = error.value();
  return !error;
}

}  // namespace

SystemTree::SystemTree() : owner_(getpid()), ready_(false) {
  std::error_code error;
  base_ = (fs::temp_directory_path(error) / "webapi-test-XXXXXX").string();
  if (error || mkdtemp(base_.data()) == nullptr) {
    errno = error ? error.value() : errno;
    base_.clear();
    return;
  }
  ready_ = LayOut();
}

SystemTree::~SystemTree() {
  if (getpid() == owner_) {
    Remove();
  }
}

std::string SystemTree::WebAPIDirectory() const { return Root().append(kWebAPIDirectory); }

bool SystemTree::LayOut() {
  if (!MakeDirectory(WebAPIDirectory() + "handlers")) {
    return false;
  }
  // The modules, for ciphers and relay, are those of the system that the test runs on.
  std::error_code ignored;
  fs::create_symlink(fs::absolute(RootedPath(kWebAPIDirectory) + "modules", ignored),
                     WebAPIDirectory() + "modules", ignored);
  return MakeDirectory(Root() + "/tmp") && MakeDirectory(Root() + kSessions) &&
         chmod((Root() + kSessions).c_str(), S_IRWXU) == 0 &&
         Write(std::string(kWebAPIDirectory) + "lib.def", kDefaults) &&
         Write(std::string(kWebAPIDirectory) + "ORBO.Entry.lib", kEntryDescription);
}

bool SystemTree::Install(const std::string& file) {
  const std::string name = fs::path(file).filename().string();
  std::string text;
  if (!ReadWholeFile(file, text)) {
    return false;
  }
  if (EndsWith(name, ".lib") || name == "lib.def") {
    return Write(std::string(kWebAPIDirectory) + name, text);
  }
  if (!EndsWith(name, ".so")) {
    errno = EINVAL;
    return false;
  }
  std::error_code error;
  fs::create_symlink(fs::absolute(file, error), WebAPIDirectory() + "handlers/" + name, error);
  errno = error.value();
  return !error;
}

bool SystemTree::Write(const std::string& path, const std::string& text) {
  return WriteTo(path, text, O_TRUNC);
}

bool SystemTree::Append(const std::string& path, const std::string& text) {
  return WriteTo(path, text, O_APPEND);
}

bool SystemTree::WriteTo(const std::string& path, const std::string& text, int flags) {
  const fs::path place = fs::path(Root() + "/" + path).lexically_normal();
  if (!MakeDirectory(place.parent_path())) {
    return false;
  }
  const Descriptor file(open(place.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0644));
  return file.IsOpen() && WriteAll(file.get(), text);
}

bool SystemTree::OpenSession(const Session& session, int idle, std::string& id) {
  if (!IsStorableUser(session.user)) {
    errno = EINVAL;
    return false;
  }
  id = NewKeyName(kIdLetter, kIdBytes);
  const std::string path = kSessions + ("/" + id);
  if (!Write(path, ToSessionText(session)) || chmod((Root() + path).c_str(), 0600) != 0) {
    return false;
  }
  std::error_code error;
  fs::last_write_time(Root() + path, fs::file_time_type::clock::now() - std::chrono::minutes(idle),
                      error);
  errno = error.value();
  return !error;
}

void SystemTree::Remove() {
  std::error_code ignored;
  if (!base_.empty()) {
    fs::remove_all(base_, ignored);
  }
}

}  // namespace ORBO
