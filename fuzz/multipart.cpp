// The reader of uploads: the first line is the Content-Type, all after it the body,
// which is read in every order of steps that the loaders allow.

#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>

#include "platform/linux/stored_files.h"
#include "platform/linux/upload_steps.h"
#include "support/scratch.h"
#include "support/target.h"
#include "util/Descriptor.h"
#include "util/read_file.h"
#include "util/write_file.h"

namespace ORBO {
namespace {

unsigned long long g_done = 0;

void CheckProgress(unsigned long long done, unsigned long long total) {
  Require(done > g_done && done <= total);
  g_done = done;
}

enum class Steps { kAll, kFieldsThenAll, kFileByFile };

// Loads what comes next as long as that is a file.
int LoadFiles(UploadStream& body, QLIBSZHASH& table) {
  OrboCgiUploadState state;
  unsigned char loaded = 0;
  std::string field_name;
  std::string file_name;
  const NextFile next = {&state, &loaded, &field_name, &file_name};
  int result = LoadFields(body, table, next);
  while (result == kUploadLoaded && body.File() != nullptr) {
    result = LoadFile(body, ScratchDirectory().c_str(), table, next);
    Require(loaded == (result == kUploadLoaded ? 1 : 0));
  }
  return result;
}

// The result and, of a success, the parameters, files by their content.
std::string Read(const std::string& type, std::string_view content, Steps steps) {
  const Descriptor file(memfd_create("body", MFD_CLOEXEC));
  Require(file.IsOpen() && WriteAll(file.get(), content) && lseek(file.get(), 0, SEEK_SET) == 0);
  UploadStream body(file.get(), type, std::to_string(content.size()));
  g_done = 0;
  body.SetProgress(CheckProgress);
  QLIBSZHASH fields;
  QLIBSZHASH paths;
  int result = kUploadLoaded;
  if (steps != Steps::kAll) {
    OrboCgiBodyPositions positions;
    char name[8];
    result = LoadLeadingFields(body, fields, positions, name, sizeof name);
    Require(positions.next <= positions.end && positions.end == content.size() &&
            std::string_view(name).size() < sizeof name);
  }
  if (steps == Steps::kFileByFile && result == kUploadLoaded) {
    result = LoadFiles(body, fields);
  }
  const int last = body.ReadAll(ScratchDirectory().c_str(), fields, paths);
  Require(result == kUploadLoaded || result == last);

  Require(last != kUploadLoaded || g_done == content.size());
  auto count = std::distance(std::filesystem::directory_iterator(ScratchDirectory()), {});
  std::string text = std::to_string(last);
  for (QLIBSZHASH* const table : {&fields, &paths}) {
    for (auto& [key, value] : table->pairs) {
      if (StoredFiles::Has(value)) {
        --count;
        Require(ReadWholeFile(value, value) && content.find(value) != std::string_view::npos);
      }
    }
  }
  Require(count == 0);
  paths.pairs.merge(fields.pairs);
  for (const auto& [key, value] : paths.pairs) {
    Require(key.find('\0') == std::string::npos);
    text += last == kUploadLoaded ? "\n" + key + "=" + value : "";
  }
  StoredFiles::RemoveAll();
  Require(last == kUploadLoaded ? content.find("--") != std::string_view::npos
                                : last < 0 && last >= kUploadNoMemory);
  return text;
}

}  // namespace

void TestInput(FuzzInput input) {
  const std::string type = input.TakeLine();
  const std::string_view body = input.TakeRest();
  const std::string all = Read(type, body, Steps::kAll);
  Require(all == Read(type, body, Steps::kFieldsThenAll));
  Require(all == Read(type, body, Steps::kFileByFile));
}

}  // namespace ORBO
