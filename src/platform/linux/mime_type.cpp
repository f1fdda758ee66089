#include <algorithm>
#include <string>
#include <string_view>

#include "platform/file_output.h"
#include "util/header_line.h"
#include "util/paths.h"
#include "util/read_file.h"

namespace {

constexpr char kUnknownType[] = "application/octet-stream";
constexpr std::string_view kBlanks = " \t\r";

struct Type {
  std::string_view extension;
  const char* name;
};

// The types of most downloads, so that the system's long list need not be read.
constexpr Type kTypes[] = {
    {"7z", "application/x-7z-compressed"},
    {"avi", "video/x-msvideo"},
    {"bmp", "image/bmp"},
    {"css", "text/css"},
    {"csv", "text/csv"},
    {"flac", "audio/flac"},
    {"gif", "image/gif"},
    {"gz", "application/gzip"},
    {"htm", "text/html"},
    {"html", "text/html"},
    {"ico", "image/vnd.microsoft.icon"},
    {"iso", "application/x-iso9660-image"},
    {"jpeg", "image/jpeg"},
    {"jpg", "image/jpeg"},
    {"js", "text/javascript"},
    {"json", "application/json"},
    {"log", "text/plain"},
    {"m4a", "audio/mp4"},
    {"md", "text/markdown"},
    {"mkv", "video/x-matroska"},
    {"mov", "video/quicktime"},
    {"mp3", "audio/mpeg"},
    {"mp4", "video/mp4"},
    {"ogg", "audio/ogg"},
    {"pdf", "application/pdf"},
    {"png", "image/png"},
    {"svg", "image/svg+xml"},
    {"tar", "application/x-tar"},
    {"tif", "image/tiff"},
    {"tiff", "image/tiff"},
    {"txt", "text/plain"},
    {"wav", "audio/x-wav"},
    {"webm", "video/webm"},
    {"webp", "image/webp"},
    {"xml", "application/xml"},
    {"zip", "application/zip"},
};

// What follows the last dot of the base name; empty where nothing stands before it.
std::string_view Extension(std::string_view name) {
  const std::size_t slash = name.rfind('/');
  if (slash != std::string_view::npos) {
    name.remove_prefix(slash + 1);
  }
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

// Takes the first word off `line`; empty at its end.
std::string_view TakeWord(std::string_view& line) {
  const std::size_t begin = line.find_first_not_of(kBlanks);
  line.remove_prefix(begin == std::string_view::npos ? line.size() : begin);
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return word;
}

// Looks the extension up in lines "type extension...".
std::string ListedType(std::string_view list, std::string_view extension) {
  while (!list.empty()) {
    std::string_view line = list.substr(0, list.find('\n'));
    list.remove_prefix(std::min(list.size(), line.size() + 1));
    const std::string_view type = TakeWord(line);
    if (type.empty() || type.front() == '#') {
      continue;
    }
    for (std::string_view word = TakeWord(line); !word.empty(); word = TakeWord(line)) {
      if (ORBO::IsSameHeader(word, extension)) {
        return std::string(type);
      }
    }
  }
  return kUnknownType;
}

}  // namespace

std::string HTTPFileOutputer::GetMimeType(const char* file_name) {
  const std::string_view extension = Extension(file_name != nullptr ? file_name : "");
  if (extension.empty()) {
    return kUnknownType;
  }
  for (const Type& type : kTypes) {
    if (ORBO::IsSameHeader(type.extension, extension)) {
      return type.name;
    }
  }
  std::string list;
  return ORBO::ReadWholeFile(ORBO::RootedPath("/etc/mime.types"), list)
             ? ListedType(list, extension)
             : kUnknownType;
}
