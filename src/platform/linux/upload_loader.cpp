#include <unistd.h>

#include <cstring>
#include <new>
#include <string>

#include "platform/cgi.h"
#include "platform/linux/cgi_variables.h"
#include "platform/linux/stored_files.h"
#include "platform/linux/upload_rest.h"
#include "platform/linux/upload_stream.h"
#include "platform/upload.h"

namespace {

using ORBO::UploadStream;

// The body of this process's request, which every loader continues.
UploadStream& Body() {
  static UploadStream body(STDIN_FILENO, ORBO::CgiVariable("CONTENT_TYPE"),
                           ORBO::CgiVariable("CONTENT_LENGTH"));
  return body;
}

// Calls `load` with the body.  Without memory nobody knows how far it was read.
template <typename Load>
int WithBody(Load load) {
  static bool has_memory = true;
  try {
    if (has_memory) {
      return load(Body());
    }
  } catch (const std::bad_alloc&) {
    has_memory = false;
  }
  return kUploadNoMemory;
}

QLIBSZHASH& TableOf(OrboCgi& cgi) {
  if (cgi.parameters == nullptr) {
    cgi.parameters = QLIBCSzHashAlloc(0);
  }
  if (cgi.parameters == nullptr) {
    throw std::bad_alloc();
  }
  return *cgi.parameters;
}

// Tells of the file that comes next, if one does.  The result is the body's from
// there on: to look at the file may show that it is cut short.
int TellFile(UploadStream& body, OrboCgiUploadState& state, unsigned char& loaded,
             std::string& field_name, std::string& file_name) {
  state.size = body.File() == nullptr ? 0 : body.MostContent();
  const ORBO::PartHeader* const file = body.File();
  field_name = file == nullptr ? "" : file->name;
  file_name = file == nullptr ? "" : *file->file_name;
  const int result = body.Finish();
  loaded = result == kUploadLoaded ? 1 : 0;
  return result;
}

}  // namespace

int OrboCgiLoadUploadNumParams(OrboCgi* cgi, int /*count*/, int /*flags*/,
                               OrboCgiBodyPositions* positions, char* buffer, std::size_t size) {
  return WithBody([&](UploadStream& body) {
    const int result = body.ReadFields(TableOf(*cgi));
    positions->next = body.boundary_position();
    positions->end = body.length();
    if (size > 0) {
      const ORBO::PartHeader* const file = body.File();
      const std::string name = file != nullptr && file->name.size() < size ? file->name : "";
      std::memcpy(buffer, name.c_str(), name.size() + 1);
    }
    return result;
  });
}

int OrboCgiLoadUploadParams(OrboCgi* cgi, OrboCgiUploadProgress progress, OrboCgiUploadState* state,
                            unsigned char* loaded, std::string* field_name,
                            std::string* file_name) {
  state->result = WithBody([&](UploadStream& body) {
    body.SetProgress(progress);
    body.ReadFields(TableOf(*cgi));
    return TellFile(body, *state, *loaded, *field_name, *file_name);
  });
  return state->result;
}

int OrboCgiLoadUploadFileToDir(OrboCgi* cgi, const char* directory, OrboCgiUploadProgress progress,
                               OrboCgiUploadState* state, unsigned char* loaded,
                               std::string* field_name, std::string* file_name) {
  state->result = WithBody([&](UploadStream& body) {
    if (body.File() == nullptr) {
      return body.Fail(kUploadMalformed);
    }
    QLIBSZHASH& table = TableOf(*cgi);
    std::string key;
    body.SetProgress(progress);
    body.StoreFile(directory, table, table, key);
    body.ReadFields(table);
    const int result = TellFile(body, *state, *loaded, *field_name, *file_name);
    if (result != kUploadLoaded && !key.empty()) {
      ORBO::StoredFiles::Remove(table.pairs[key]);
      table.pairs.erase(key);
    }
    return result;
  });
  return state->result;
}

int OrboCgiLoadUploadAll(QLIBSZHASH* const* tables, const char* directory,
                         OrboCgiUploadProgress progress, int /*flags*/) {
  return WithBody([&](UploadStream& body) {
    body.SetProgress(progress);
    return body.ReadAll(directory, *tables[0], *tables[1]);
  });
}

int ORBO::BeginUploadRest(QLIBSZHASH& fields, std::string& text, UploadBody** rest,
                          std::uint64_t& size) {
  return WithBody([&](UploadStream& body) {
    const int result = body.ReadFields(fields);
    if (result == kUploadLoaded) {
      size = body.length() - body.boundary_position();
      *rest = &body.TakeRest(text);
    }
    return result;
  });
}

bool OrboCgiIsStoredFile(const std::string& path) { return ORBO::StoredFiles::Has(path); }
