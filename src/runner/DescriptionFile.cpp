#include "runner/DescriptionFile.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "util/json_cursor.h"
#include "util/json_scan.h"
#include "util/read_file.h"

namespace ORBO {
namespace {

using JSON::ContainerCursor;
using JSON::kMalformed;

constexpr JSON::Comments kComments = JSON::Comments::kAllowed;

std::string_view Slice(std::string_view text, std::size_t begin, std::size_t end) {
  return end == kMalformed ? std::string_view() : text.substr(begin, end - begin);
}

bool BeginsWith(std::string_view text, std::size_t position, char c) {
  return position < text.size() && text[position] == c;
}

}  // namespace

std::string_view DescriptionFile::Entry::Find(std::string_view key) const {
  return JSON::FindMember(members, key);
}

std::unique_ptr<DescriptionFile> DescriptionFile::Read(const std::string& path) {
  std::unique_ptr<DescriptionFile> file(new DescriptionFile);
  if (!ReadWholeFile(path, file->text_) || !file->Index()) {
    return nullptr;
  }
  return file;
}

bool DescriptionFile::Index() {
  const std::size_t begin = JSON::SkipBlanks(text_, 0, kComments);
  if (!BeginsWith(text_, begin, '{')) {
    return false;
  }
  ContainerCursor cursor(text_, begin, kComments);
  while (cursor.Next()) {
    Entry entry;
    entry.api = JSON::DecodeString(cursor.key());
    const std::size_t end = IndexEntry(cursor.value(), entry);
    entry.text = Slice(text_, cursor.value(), end);
    entries_.push_back(std::move(entry));
    cursor.Leave(end);
  }
  if (cursor.end() == kMalformed ||
      JSON::SkipBlanks(text_, cursor.end(), kComments) != text_.size()) {
    return false;
  }
  KeepLastOfEachName();
  return true;
}

std::size_t DescriptionFile::IndexEntry(std::size_t position, Entry& entry) {
  if (!BeginsWith(text_, position, '{')) {
    return JSON::SkipValue(text_, position, kComments);
  }
  ContainerCursor cursor(text_, position, kComments);
  while (cursor.Next()) {
    const bool is_methods = JSON::QuotedEquals(cursor.key(), "methods");
    const std::size_t end = is_methods ? IndexVersions(cursor.value(), entry)
                                       : JSON::SkipValue(text_, cursor.value(), kComments);
    entry.members.push_back({cursor.key(), Slice(text_, cursor.value(), end)});
    cursor.Leave(end);
  }
  return cursor.end();
}

std::size_t DescriptionFile::IndexVersions(std::size_t position, Entry& entry) {
  entry.versions.clear();
  entry.methods.clear();
  if (!BeginsWith(text_, position, '{')) {
    return JSON::SkipValue(text_, position, kComments);
  }
  ContainerCursor cursor(text_, position, kComments);
  while (cursor.Next()) {
    Version version{cursor.key(), BeginsWith(text_, cursor.value(), '['), entry.methods.size(), 0};
    cursor.Leave(version.is_list ? IndexMethods(cursor.value(), entry)
                                 : JSON::SkipValue(text_, cursor.value(), kComments));
    version.count = entry.methods.size() - version.first;
    entry.versions.push_back(version);
  }
  return cursor.end();
}

std::size_t DescriptionFile::IndexMethods(std::size_t position, Entry& entry) {
  ContainerCursor cursor(text_, position, kComments);
  while (cursor.Next()) {
    Method method{};
    cursor.Leave(IndexMethod(cursor.value(), method));
    entry.methods.push_back(method);
  }
  return cursor.end();
}

std::size_t DescriptionFile::IndexMethod(std::size_t position, Method& method) {
  std::size_t end;
  if (BeginsWith(text_, position, '{')) {
    std::size_t members = 0;
    ContainerCursor cursor(text_, position, kComments);
    while (cursor.Next()) {
      const std::size_t value_end = JSON::SkipValue(text_, cursor.value(), kComments);
      if (members++ == 0) {
        method.name = cursor.key();
        method.attributes = Slice(text_, cursor.value(), value_end);
      }
      cursor.Leave(value_end);
    }
    method.one_member = members == 1;
    end = cursor.end();
  } else {
    end = JSON::SkipValue(text_, position, kComments);
    if (BeginsWith(text_, position, '"')) {
      method.name = Slice(text_, position, end);
    }
  }
  method.text = Slice(text_, position, end);
  return end;
}

void DescriptionFile::KeepLastOfEachName() {
  // Unique keeps the first of equals, so the later ones are sorted to the front.
  std::reverse(entries_.begin(), entries_.end());
  std::stable_sort(entries_.begin(), entries_.end(),
                   [](const Entry& a, const Entry& b) { return a.api < b.api; });
  entries_.erase(std::unique(entries_.begin(), entries_.end(),
                             [](const Entry& a, const Entry& b) { return a.api == b.api; }),
                 entries_.end());
}

}  // namespace ORBO
