#include "support/scratch.h"

#include <fcntl.h>
#include <stdlib.h>

#include <filesystem>

#include "support/target.h"
#include "util/Descriptor.h"
#include "util/write_file.h"

namespace ORBO {
namespace {

std::string MakeDirectory() {
  const char* const place = std::getenv("TMPDIR");
  std::string path = std::string(place == nullptr ? "/dev/shm" : place) + "/webapi-fuzz-XXXXXX";
  Require(mkdtemp(path.data()) != nullptr);
  return path;
}

}  // namespace

const std::string& ScratchDirectory() {
  static const std::string path = MakeDirectory();
  static const int is_kept = std::atexit([] { std::filesystem::remove_all(path); });
  Require(is_kept == 0);
  return path;
}

void WriteScratch(const std::string& path, std::string_view text) {
  const std::filesystem::path place = ScratchDirectory() + "/" + path;
  std::filesystem::create_directories(place.parent_path());
  const Descriptor file(open(place.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  Require(file.IsOpen() && WriteAll(file.get(), text));
}

void EnterScratchRoot() { setenv("WEBAPI_ROOT", ScratchDirectory().c_str(), 1); }

}  // namespace ORBO
