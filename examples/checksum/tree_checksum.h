#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace example {

struct File {
  std::string path;
  std::uint64_t size;
};

// FNV-1a of 64 bits over the bytes of all files: enough to see a change, and no proof
// against anybody who wants to hide one.
struct Checksum {
  std::uint64_t value = 14695981039346656037U;
  std::uint64_t bytes = 0;
};

// The directory that `path`, relative to `top`, leads to, with all links followed; ""
// if that is none or lies outside of `top`.
std::string ResolveBelow(const std::string& top, const std::string& path);

// The regular files below `directory` in name order; links are not followed, and what
// cannot be entered is left out.
std::vector<File> ListFiles(const std::string& directory);

std::uint64_t TotalSize(const std::vector<File>& files);

// Adds the bytes of a file to `sum` and tells how many there are in all, from time to
// time.  False if the file cannot be read to its end.
bool AddFile(const std::string& path, Checksum& sum,
             const std::function<void(std::uint64_t bytes)>& tell);

std::string ToHex(std::uint64_t value);

}  // namespace example
