#include "platform/linux/upload_steps.h"

#include <cstring>

#include "platform/linux/stored_files.h"

namespace ORBO {
namespace {

// Tells of the file that comes next, if one does.  The result is the body's from
// there on: to look at the file may show that it is cut short.
int TellFile(UploadStream& body, const NextFile& next) {
  next.state->size = body.File() == nullptr ? 0 : body.MostContent();
  const PartHeader* const file = body.File();
  *next.field_name = file == nullptr ? "" : file->name;
  *next.file_name = file == nullptr ? "" : *file->file_name;
  const int result = body.Finish();
  *next.loaded = result == kUploadLoaded ? 1 : 0;
  return result;
}

}  // namespace

int LoadLeadingFields(UploadStream& body, QLIBSZHASH& table, OrboCgiBodyPositions& positions,
                      char* buffer, std::size_t size) {
  const int result = body.ReadFields(table);
  positions.next = body.boundary_position();
  positions.end = body.length();
  if (size > 0) {
    const PartHeader* const file = body.File();
    const std::string name = file != nullptr && file->name.size() < size ? file->name : "";
    std::memcpy(buffer, name.c_str(), name.size() + 1);
  }
  return result;
}

int LoadFields(UploadStream& body, QLIBSZHASH& table, const NextFile& next) {
  body.ReadFields(table);
  return TellFile(body, next);
}

int LoadFile(UploadStream& body, const char* directory, QLIBSZHASH& table, const NextFile& next) {
  if (body.File() == nullptr) {
    return body.Fail(kUploadMalformed);
  }
  std::string key;
  body.StoreFile(directory, table, table, key);
  body.ReadFields(table);
  const int result = TellFile(body, next);
  if (result != kUploadLoaded && !key.empty()) {
    StoredFiles::Remove(table.pairs[key]);
    table.pairs.erase(key);
  }
  return result;
}

}  // namespace ORBO
