// The reader of uploads: the first line is the Content-Type, all after it the body.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/linux/stored_files.h"
#include "platform/linux/upload_stream.h"
#include "util/write_file.h"

namespace {

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

// In memory; goes with the process.
class Directory {
 public:
  Directory() { Require(mkdtemp(path_.data()) != nullptr); }
  ~Directory() { std::filesystem::remove(path_); }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_ = "/dev/shm/webapi-fuzz-XXXXXX";
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Directory directory;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string_view type = input.substr(0, input.find('\n'));
  const std::string_view body = input.substr(std::min(type.size() + 1, size));
  const int file = memfd_create("body", MFD_CLOEXEC);
  Require(file >= 0 && ORBO::WriteAll(file, body) && lseek(file, 0, SEEK_SET) == 0);

  ORBO::UploadStream stream(file, type, std::to_string(body.size()));
  QLIBSZHASH fields;
  QLIBSZHASH paths;
  const int result = stream.ReadAll(directory.path(), fields, paths);
  close(file);

  std::uintmax_t content = 0;
  for (const auto& [name, text] : fields.pairs) {
    content += text.size();
    Require(name.find('\0') == std::string::npos);
  }
  std::size_t stored = 0;
  for (const auto& [name, path] : paths.pairs) {
    content += std::filesystem::file_size(path);
    ++stored;
  }
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    Require(stored-- > 0 && entry.is_regular_file());
  }
  Require(stored == 0 && content <= body.size());
  Require(result == kUploadLoaded ? body.find("--") != std::string_view::npos
                                  : result < 0 && result >= kUploadNoMemory);
  ORBO::StoredFiles::RemoveAll();
  return 0;
}
