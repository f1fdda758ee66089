#include "check/DescribedFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "check/json_faults.h"
#include "util/json_cursor.h"
#include "util/read_file.h"

namespace ORBO::tool {
namespace {

using Entry = DescriptionFile::Entry;

// The object that the document is.
std::string_view DocumentOf(std::string_view text) {
  return text.substr(JSON::SkipBlanks(text, 0, JSON::Comments::kAllowed));
}

}  // namespace

bool ReadJsonObject(const std::string& name, const std::string& shown, std::string& text,
                    Findings& findings) {
  if (!ReadWholeFile(name, text)) {
    // Of what is neither a file nor a directory.
    const char* const reason = errno == EINVAL ? "it is no regular file" : std::strerror(errno);
    findings.Error({shown}, std::string("cannot be read: ") + reason);
    return false;
  }
  const JsonSource source{shown, text};
  if (const std::optional<JsonFault> fault = FindJsonFault(text)) {
    findings.Error(source.AtColumn(fault->offset), fault->text);
    return false;
  }
  if (DocumentOf(text).front() != '{') {
    findings.Error(source.At(DocumentOf(text)), "the document must be an object");
    return false;
  }
  return true;
}

DescribedFile::DescribedFile(std::string name, std::string shown,
                             std::unique_ptr<DescriptionFile> file)
    : name_(std::move(name)), file_(std::move(file)), source_{std::move(shown), file_->text()} {
  for (const Member& member : ChildrenOf(DocumentOf(source_.text))) {
    names_[JSON::DecodeString(member.key)] = member.key;
  }
}

std::unique_ptr<DescribedFile> DescribedFile::Read(const std::string& name,
                                                   const std::string& shown, Findings& findings) {
  std::unique_ptr<DescriptionFile> file = DescriptionFile::Read(name);
  if (file == nullptr) {
    std::string text;
    if (ReadJsonObject(name, shown, text, findings)) {
      findings.Error({shown}, "the loader cannot use this file");
    }
    return nullptr;
  }
  return std::unique_ptr<DescribedFile>(new DescribedFile(name, shown, std::move(file)));
}

const Entry* DescribedFile::Find(const std::string& api) const {
  const auto found = std::find_if(entries().begin(), entries().end(),
                                  [&api](const Entry& entry) { return entry.api == api; });
  return found != entries().end() ? &*found : nullptr;
}

Place DescribedFile::At(const Entry& entry) const { return source_.At(names_.at(entry.api)); }

Place DescribedFile::At(const Entry& entry, std::string_view key) const {
  const auto member =
      std::find_if(entry.members.rbegin(), entry.members.rend(),
                   [key](const Member& other) { return JSON::QuotedEquals(other.key, key); });
  return member != entry.members.rend() ? source_.At(member->key) : At(entry);
}

}  // namespace ORBO::tool
