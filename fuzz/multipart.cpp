// The reader of uploads: the first line is the Content-Type, all after it the body,
// which is read in every order of steps that the loaders allow.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/linux/stored_files.h"
#include "platform/linux/upload_steps.h"
#include "util/Descriptor.h"
#include "util/read_file.h"
#include "util/write_file.h"

namespace {

void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

// In memory; goes with the process.
const char* Directory() {
  static std::string path = "/dev/shm/webapi-fuzz-XXXXXX";
  static const bool is_made =
      mkdtemp(path.data()) != nullptr && std::atexit([] { std::filesystem::remove(path); }) == 0;
  Require(is_made);
  return path.c_str();
}

// The number of the files stored there, and their size.
std::pair<long, std::uintmax_t> Stored() {
  std::pair<long, std::uintmax_t> stored;
  for (const auto& entry : std::filesystem::directory_iterator(Directory())) {
    ++stored.first;
    stored.second += entry.file_size();
  }
  return stored;
}

unsigned long long g_done = 0;

void CheckProgress(unsigned long long done, unsigned long long total) {
  Require(done > g_done && done <= total);
  g_done = done;
}

enum class Steps { kAll, kFieldsThenAll, kFileByFile };

// Loads what comes next as long as that is a file.
int LoadFiles(ORBO::UploadStream& body, QLIBSZHASH& table) {
  OrboCgiUploadState state;
  unsigned char loaded = 0;
  std::string field_name;
  std::string file_name;
  const ORBO::NextFile next = {&state, &loaded, &field_name, &file_name};
  int result = ORBO::LoadFields(body, table, next);
  while (result == kUploadLoaded && body.File() != nullptr) {
    const std::uintmax_t most = state.size;
    const std::uintmax_t before = Stored().second;
    result = ORBO::LoadFile(body, Directory(), table, next);
    const std::uintmax_t size = Stored().second - before;
    Require(size <= most && (result != kUploadLoaded || (size == 0) == (most == 0)));
    Require(loaded == (result == kUploadLoaded ? 1 : 0));
  }
  return result;
}

// The result and, of a success, the parameters, files by their content.
std::string Read(const std::string& type, std::string_view content, Steps steps) {
  const ORBO::Descriptor file(memfd_create("body", MFD_CLOEXEC));
  Require(file.IsOpen() && ORBO::WriteAll(file.get(), content) &&
          lseek(file.get(), 0, SEEK_SET) == 0);
  ORBO::UploadStream body(file.get(), type, std::to_string(content.size()));
  g_done = 0;
  body.SetProgress(CheckProgress);
  QLIBSZHASH fields;
  QLIBSZHASH paths;
  int result = kUploadLoaded;
  if (steps != Steps::kAll) {
    OrboCgiBodyPositions positions;
    char name[8];
    result = ORBO::LoadLeadingFields(body, fields, positions, name, sizeof name);
    Require(positions.next <= positions.end && positions.end == content.size() &&
            std::string_view(name).size() < sizeof name);
  }
  if (steps == Steps::kFileByFile && result == kUploadLoaded) {
    result = LoadFiles(body, fields);
  }
  const int last = body.ReadAll(Directory(), fields, paths);
  Require(result == kUploadLoaded || result == last);

  auto [count, size] = Stored();
  Require(size <= content.size() && (last != kUploadLoaded || g_done == content.size()));
  std::string text = std::to_string(last);
  for (QLIBSZHASH* const table : {&fields, &paths}) {
    for (auto& [key, value] : table->pairs) {
      count -= ORBO::StoredFiles::Has(value) ? 1 : 0;
      Require(!ORBO::StoredFiles::Has(value) || ORBO::ReadWholeFile(value, value));
    }
  }
  Require(count == 0);
  paths.pairs.merge(fields.pairs);
  for (const auto& [key, value] : paths.pairs) {
    Require(key.find('\0') == std::string::npos);
    text += last == kUploadLoaded ? "\n" + key + "=" + value : "";
  }
  ORBO::StoredFiles::RemoveAll();
  Require(last == kUploadLoaded ? content.find("--") != std::string_view::npos
                                : last < 0 && last >= kUploadNoMemory);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string type(input.substr(0, input.find('\n')));
  const std::string_view body = input.substr(std::min(type.size() + 1, size));
  const std::string all = Read(type, body, Steps::kAll);
  Require(all == Read(type, body, Steps::kFieldsThenAll));
  Require(all == Read(type, body, Steps::kFileByFile));
  return 0;
}
