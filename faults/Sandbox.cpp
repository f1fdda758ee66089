#include "Sandbox.h"

#include <json/reader.h>
#include <json/value.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace faults {
namespace {

namespace fs = std::filesystem;

constexpr char kPassword[] = "a long password";
constexpr char kUpload[] = "the content of an upload\n";

std::string Query(const std::string& api, const std::string& method,
                  const std::string& parameters = "") {
  return "QUERY_STRING=api=" + api + "&version=1&method=" + method + parameters;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool IsJson(const std::string& text) {
  Json::Value value;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  return reader->parse(text.data(), text.data() + text.size(), &value, nullptr) && value.isObject();
}

// A file that its writer has not yet given its name.
bool IsDraft(const fs::path& path) {
  return path.extension() == ".new" || path.filename().string().front() == '.';
}

// The regular files below `directory` that have their names.
std::vector<fs::path> Files(const fs::path& directory) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file() && !IsDraft(entry.path())) {
      files.push_back(entry.path());
    }
  }
  return files;
}

void RemoveContent(const fs::path& directory) {
  for (const auto& entry : fs::directory_iterator(directory)) {
    fs::remove_all(entry.path());
  }
}

std::string FirstLineOf(const std::string& command) {
  std::FILE* const pipe = popen(command.c_str(), "re");
  char line[256] = "";
  const bool is_read = pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr;
  if (pipe == nullptr || pclose(pipe) != 0 || !is_read) {
    throw std::runtime_error("failed: " + command);
  }
  const std::string text = line;
  return text.substr(0, text.find('\n'));
}

}  // namespace

Sandbox::Sandbox(const std::string& stage, const std::string& command)
    : root_((fs::temp_directory_path() / "webapi-faults-XXXXXX").string()) {
  if (mkdtemp(root_.data()) == nullptr) {
    throw std::runtime_error("cannot make " + root_);
  }
  fs::create_directories(Path("/usr/orbo/orboman"));
  fs::copy(stage, Path("/usr/orbo/orboman/webapi"), fs::copy_options::recursive);
  for (const char* const directory :
       {"/run/orbo/sessions", "/run/orbo/logins", "/run/orbo/tasks", "/var/lib/orbo/tokens",
        "/var/lib/orbo/share", "/var/lib/orbo/users", "/var/spool/webapi", "/srv/files",
        "/etc/orbo", "/etc/orbo/relay.d"}) {
    fs::create_directories(Path(directory));
    chmod(Path(directory).c_str(), 0700);
  }
  std::ofstream(Path("/etc/orbo/platform.conf"))
      << "administrators=ada\nvolumes=/var/lib/orbo\nlogin_attempts=1000000\n"
         "login_address_attempts=1000000\n";
  std::ofstream(Path("/etc/orbo/relay.d/1")) << "url=" << target_.Url() << "\ntoken=t\n";
  chmod(Path("/etc/orbo/relay.d/1").c_str(), 0600);
  std::ofstream(Path("/etc/orboinfo.conf")) << "join_user_data_collect=\"yes\"\n";
  std::ofstream(Path("/srv/files/text.txt")) << std::string(100000, 'x');
  const std::string webapi = "WEBAPI_ROOT=" + root_ + " " + command;
  if (std::system(
          ("echo '" + std::string(kPassword) + "' | " + webapi + " passwd --stdin ada").c_str()) !=
      0) {
    throw std::runtime_error("no password can be set");
  }
  session_ = FirstLineOf(webapi + " session open ada --address 127.0.0.1");
}

Sandbox::~Sandbox() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

Request Sandbox::Plain() const {
  return {"plain", {Query("ORBO.Example.Greeting", "hello", "&name=Ada&tid=t")}, ""};
}

Request Sandbox::Authenticated() const {
  return {"authenticated",
          {Query("ORBO.Example.Greeting.Member", "hello"), "HTTP_COOKIE=id=" + session_},
          ""};
}

Request Sandbox::Compound() const {
  const char* const call = "{\"api\":\"ORBO.Example.Greeting\",\"version\":1,\"method\":\"hello\"}";
  return {"compound",
          {"REQUEST_METHOD=POST", "CONTENT_TYPE=application/x-www-form-urlencoded",
           Query("ORBO.Entry.Request", "request")},
          std::string("compound=[") + call + "," + call + "]"};
}

Request Sandbox::TaskStart() const {
  return {"task start",
          {Query("ORBO.Example.Checksum", "start", "&path=\"base-files\""),
           "HTTP_COOKIE=id=" + session_},
          ""};
}

Request Sandbox::Upload() const {
  return {"upload",
          {"REQUEST_METHOD=POST", "CONTENT_TYPE=multipart/form-data; boundary=edge",
           Query("ORBO.Example.Share", "upload"), "HTTP_COOKIE=id=" + session_},
          std::string("--edge\r\nContent-Disposition: form-data; name=\"file\"; "
                      "filename=\"text.txt\"\r\n\r\n") +
              kUpload + "\r\n--edge--\r\n"};
}

Request Sandbox::Download() const {
  return {"download", {Query("ORBO.Example.Files", "fetch", "&name=\"text.txt\"")}, ""};
}

Request Sandbox::Login() const {
  return {"login",
          {"REQUEST_METHOD=POST", "CONTENT_TYPE=application/x-www-form-urlencoded",
           Query("ORBO.Session", "open")},
          "user=\"ada\"&password=\"" + std::string(kPassword) + "\""};
}

Request Sandbox::Counted() const {
  Request request = Authenticated();
  request.name = "counted";
  return request;
}

Request Sandbox::Relayed() const {
  return {
      "relayed",
      {Query("ORBO.Example.Greeting.Member", "hello", "&relay_ds=1"), "HTTP_COOKIE=id=" + session_},
      ""};
}

Request Sandbox::RelayedUpload() const {
  Request request = Upload();
  request.name = "relayed upload";
  for (std::string& variable : request.environment) {
    variable += variable.rfind("QUERY_STRING=", 0) == 0 ? "&relay_ds=1" : "";
  }
  return request;
}

void Sandbox::Clear() const {
  RemoveContent(Path("/run/orbo/tasks"));
  // Killed attempts to log in count as failed ones, and lock.
  RemoveContent(Path("/run/orbo/logins"));
  // Every login looks at all sessions.
  for (const fs::path& path : Files(Path("/run/orbo/sessions"))) {
    if (path.filename() != session_) {
      fs::remove(path);
    }
  }
  RemoveContent(Path("/var/lib/orbo/share"));
}

std::string Sandbox::FindFault(bool uploads_are_removed) const {
  for (const char* const directory :
       {"/run/orbo/sessions", "/run/orbo/tasks", "/var/spool/webapi"}) {
    for (const fs::path& path : Files(Path(directory))) {
      const bool is_text = path.extension() == ".log" || path.extension() == ".lock";
      if (!is_text && !IsJson(ReadFile(path))) {
        return path.string() + " is no whole record";
      }
    }
  }
  for (const fs::path& path : Files(Path("/var/lib/orbo/share"))) {
    if (ReadFile(path) != kUpload) {
      return path.string() + " is no whole upload";
    }
  }
  if (target_.MissesUpload()) {
    return "a call was relayed without its upload";
  }
  const fs::path uploads = Path("/var/lib/orbo/@tmp");
  if (uploads_are_removed && fs::exists(uploads) && !fs::is_empty(uploads)) {
    return fs::directory_iterator(uploads)->path().string() + " is left";
  }
  return "";
}

}  // namespace faults
