#include <unistd.h>

#include <new>
#include <optional>
#include <string>

#include "platform/cgi.h"
#include "platform/linux/abandoned_files.h"
#include "platform/linux/cgi_variables.h"
#include "platform/linux/stored_files.h"
#include "platform/linux/upload_rest.h"
#include "platform/linux/upload_steps.h"
#include "platform/upload.h"

namespace {

using ORBO::UploadStream;

// Whether the request that the body belongs to has been served.
bool g_is_over = false;

// The body of the request, which every loader continues.
UploadStream& Body() {
  static std::optional<UploadStream> body;
  if (!body || g_is_over) {
    body.emplace(STDIN_FILENO, ORBO::CgiVariable("CONTENT_TYPE"),
                 ORBO::CgiVariable("CONTENT_LENGTH"));
    g_is_over = false;
  }
  return *body;
}

// False from an exception on, for lack of memory or of the callback for progress:
// nobody knows how far the body was read.
bool g_is_usable = true;

// Calls `load` with the body.
template <typename Load>
int WithBody(OrboCgiUploadProgress progress, Load load) {
  if (!g_is_usable) {
    return kUploadNoMemory;
  }
  g_is_usable = false;
  try {
    Body().SetProgress(progress);
    const int result = load(Body());
    g_is_usable = true;
    return result;
  } catch (const std::bad_alloc&) {
    return kUploadNoMemory;
  }
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

}  // namespace

int OrboCgiLoadUploadNumParams(OrboCgi* cgi, int /*count*/, int /*flags*/,
                               OrboCgiBodyPositions* positions, char* buffer, std::size_t size) {
  return WithBody(nullptr, [&](UploadStream& body) {
    return ORBO::LoadLeadingFields(body, TableOf(*cgi), *positions, buffer, size);
  });
}

int OrboCgiLoadUploadParams(OrboCgi* cgi, OrboCgiUploadProgress progress, OrboCgiUploadState* state,
                            unsigned char* loaded, std::string* field_name,
                            std::string* file_name) {
  state->result = WithBody(progress, [&](UploadStream& body) {
    return ORBO::LoadFields(body, TableOf(*cgi), {state, loaded, field_name, file_name});
  });
  return state->result;
}

int OrboCgiLoadUploadFileToDir(OrboCgi* cgi, const char* directory, OrboCgiUploadProgress progress,
                               OrboCgiUploadState* state, unsigned char* loaded,
                               std::string* field_name, std::string* file_name) {
  state->result = WithBody(progress, [&](UploadStream& body) {
    return ORBO::LoadFile(body, directory, TableOf(*cgi), {state, loaded, field_name, file_name});
  });
  return state->result;
}

int OrboCgiLoadUploadAll(QLIBSZHASH* const* tables, const char* directory,
                         OrboCgiUploadProgress progress, int /*flags*/) {
  return WithBody(progress, [&](UploadStream& body) {
    return body.ReadAll(directory, *tables[0], *tables[1]);
  });
}

void OrboCgiSweepUploads(const char* directory) {
  if (directory != nullptr) {
    ORBO::RemoveAbandonedFiles(directory);
  }
}

void ORBO::EndUpload() {
  g_is_over = true;
  g_is_usable = true;
}

int ORBO::BeginUploadRest(QLIBSZHASH& fields, std::string& text, UploadBody** rest,
                          std::uint64_t& size) {
  return WithBody(nullptr, [&](UploadStream& body) {
    const int result = body.ReadFields(fields);
    if (result == kUploadLoaded) {
      size = body.length() - body.boundary_position();
      *rest = &body.TakeRest(text);
    }
    return result;
  });
}

bool OrboCgiIsStoredFile(const std::string& path) { return ORBO::StoredFiles::Has(path); }
