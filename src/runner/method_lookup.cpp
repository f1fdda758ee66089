#include "runner/method_lookup.h"

#include <utility>

#include "util/json_cursor.h"

namespace ORBO {
namespace {

constexpr JSON::Comments kComments = JSON::Comments::kAllowed;

using Entry = DescriptionFile::Entry;
using Method = DescriptionFile::Method;

const DescriptionFile::Version* FindVersion(const Entry& entry, int version) {
  const std::string name = std::to_string(version);
  for (auto row = entry.versions.rbegin(); row != entry.versions.rend(); ++row) {
    if (JSON::QuotedEquals(row->name, name)) {
      return row->is_list ? &*row : nullptr;
    }
  }
  return nullptr;
}

// The first element of the version's list that `matches`; null if there is
// none.
template <typename Matches>
const Method* FindElement(const Entry& entry, int version, Matches matches) {
  const DescriptionFile::Version* list = FindVersion(entry, version);
  if (list == nullptr) {
    return nullptr;
  }
  for (std::size_t i = list->first; i < list->first + list->count; ++i) {
    if (!entry.methods[i].name.empty() && matches(entry.methods[i])) {
      return &entry.methods[i];
    }
  }
  return nullptr;
}

bool IsObject(const Method& method) { return method.text.front() == '{'; }

// Whether any member of the object element `method` has the name `name`.
bool HasMember(const Method& method, std::string_view name) {
  JSON::ContainerCursor cursor(method.text, 0, kComments);
  while (cursor.Next()) {
    if (JSON::QuotedEquals(cursor.key(), name)) {
      return true;
    }
    cursor.Leave(JSON::SkipValue(method.text, cursor.value(), kComments));
  }
  return false;
}

struct FirstMember {
  std::string name;
  std::string_view value;
};

// The member of an object element whose name comes first.
FirstMember FindFirstMember(const Method& method) {
  FirstMember first;
  bool found = false;
  JSON::ContainerCursor cursor(method.text, 0, kComments);
  while (cursor.Next()) {
    const std::size_t end = JSON::SkipValue(method.text, cursor.value(), kComments);
    std::string name = JSON::DecodeString(cursor.key());
    if (!found || name <= first.name) {
      first = {std::move(name), method.text.substr(cursor.value(), end - cursor.value())};
      found = true;
    }
    cursor.Leave(end);
  }
  return first;
}

}  // namespace

bool IsMethodListed(const Entry& entry, int version, const std::string& method) {
  return FindElement(entry, version, [&](const Method& element) {
           return JSON::QuotedEquals(element.name, method) ||
                  (IsObject(element) && !element.one_member && HasMember(element, method));
         }) != nullptr;
}

std::string_view FindMethodAttributes(const Entry& entry, int version, const std::string& method) {
  const Method* element = FindElement(entry, version, [&](const Method& candidate) {
    if (!IsObject(candidate)) {
      return false;
    }
    return candidate.one_member ? JSON::QuotedEquals(candidate.name, method)
                                : FindFirstMember(candidate).name == method;
  });
  if (element == nullptr) {
    return {};
  }
  return element->one_member ? element->attributes : FindFirstMember(*element).value;
}

}  // namespace ORBO
