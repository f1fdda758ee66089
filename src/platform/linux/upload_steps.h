#pragma once

#include <cstddef>
#include <string>

#include "platform/linux/upload_stream.h"
#include "platform/string_table.h"
#include "platform/upload.h"

namespace ORBO {

// What a loader tells of the file that comes next; see OrboCgiLoadUploadParams.
struct NextFile {
  OrboCgiUploadState* state;
  unsigned char* loaded;
  std::string* field_name;
  std::string* file_name;
};

// The loaders of platform/upload.h, on any body and with a table that is there.

int LoadLeadingFields(UploadStream& body, QLIBSZHASH& table, OrboCgiBodyPositions& positions,
                      char* buffer, std::size_t size);
int LoadFields(UploadStream& body, QLIBSZHASH& table, const NextFile& next);
int LoadFile(UploadStream& body, const char* directory, QLIBSZHASH& table, const NextFile& next);

}  // namespace ORBO
