// Files as answers: the files of one directory, listed and fetched.

#include <webapi/APIDownload.h>
#include <webapi/APIRequest.h>
#include <webapi/APIResponse.h>
#include <webapi/APITable.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

namespace fs = std::filesystem;
using ORBO::APIDownload;
using ORBO::APIRequest;
using ORBO::APIResponse;

constexpr int kErrorParameter = 1001;
constexpr int kErrorNoFile = 1002;

// Below the root prefix, like the fixed places of the system.  The example
// configurations of the web servers allow send-file from here.
fs::path Directory() {
  const char* const root = std::getenv("WEBAPI_ROOT");
  return std::string(root == nullptr ? "" : root) + "/srv/files";
}

// ORBO.Example.Files 1 list: the names of all files with their sizes in bytes.
void List(APIRequest*, APIResponse* response) {
  Json::Value files(Json::objectValue);
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(Directory(), error)) {
    const std::uintmax_t size = entry.file_size(error);
    if (!error && entry.symlink_status(error).type() == fs::file_type::regular) {
      files[entry.path().filename().string()] = Json::UInt64{size};
    }
  }
  response->SetSuccess(files);
}

// ORBO.Example.Files 1 fetch: the file "name".  With "show", browsers may show it.
void Fetch(APIRequest* request, APIResponse* response) {
  const auto name = request->GetAndCheckString("name", APIRequest::PARAM_REQUIRED);
  // One file of the directory: no path that leads elsewhere, by a link neither.
  if (name.IsInvalid() || fs::path(name.Get()).filename() != name.Get()) {
    response->SetError(kErrorParameter);
    return;
  }
  const fs::path path = Directory() / name.Get();
  std::error_code error;
  if (fs::symlink_status(path, error).type() != fs::file_type::regular) {
    response->SetError(kErrorNoFile);
    return;
  }
  APIDownload download(response);
  if (!request->HasParam("show")) {
    download.SetAttachment(name.Get());
  }
  if (download.Output(path) < 0) {
    response->SetError(kErrorNoFile);
  }
}

ORBO::_tag_API_TABLE methods[] = {
    {"ORBO.Example.Files", 1, "list", List},
    {"ORBO.Example.Files", 1, "fetch", Fetch},
    {nullptr, 0, nullptr, nullptr},
};

}  // namespace

ORBO::_tag_API_TABLE* GetAPITable() { return methods; }
