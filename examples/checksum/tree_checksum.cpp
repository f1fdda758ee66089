#include "tree_checksum.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace example {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kPrime = 1099511628211U;
constexpr std::size_t kBufferSize = std::size_t{256} << 10;

}  // namespace

std::string ResolveBelow(const std::string& top, const std::string& path) {
  std::error_code error;
  const fs::path directory = fs::canonical(fs::path(top) / path, error);
  if (error || path.find('\0') != std::string::npos || !fs::is_directory(directory, error)) {
    return "";
  }
  const std::string text = directory.string();
  return text == top || text.compare(0, top.size() + 1, top + "/") == 0 ? text : "";
}

std::vector<File> ListFiles(const std::string& directory) {
  std::vector<File> files;
  std::error_code error;
  fs::recursive_directory_iterator entry(directory, fs::directory_options::skip_permission_denied,
                                         error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code gone;
    if (entry->symlink_status(gone).type() == fs::file_type::regular) {
      const std::uint64_t size = entry->file_size(gone);
      files.push_back({entry->path().string(), gone ? 0 : size});
    }
  }
  std::sort(files.begin(), files.end(),
            [](const File& left, const File& right) { return left.path < right.path; });
  return files;
}

std::uint64_t TotalSize(const std::vector<File>& files) {
  std::uint64_t total = 0;
  for (const File& file : files) {
    total += file.size;
  }
  return total;
}

bool AddFile(const std::string& path, Checksum& sum,
             const std::function<void(std::uint64_t bytes)>& tell) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                             std::fclose);
  if (file == nullptr) {
    return false;
  }
  std::vector<unsigned char> buffer(kBufferSize);
  std::size_t length;
  while ((length = std::fread(buffer.data(), 1, buffer.size(), file.get())) > 0) {
    for (std::size_t i = 0; i < length; ++i) {
      sum.value = (sum.value ^ buffer[i]) * kPrime;
    }
    sum.bytes += length;
    tell(sum.bytes);
  }
  return std::ferror(file.get()) == 0;
}

std::string ToHex(std::uint64_t value) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
  return text;
}

}  // namespace example
