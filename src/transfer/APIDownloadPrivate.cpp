#include "transfer/APIDownloadPrivate.h"

#include <cerrno>
#include <exception>
#include <iostream>

#include <webapi/APIResponse.h>

#include "response/content_type.h"
#include "transfer/content_disposition.h"
#include "util/HeldOutput.h"
#include "util/StreamGuard.h"
#include "util/header_line.h"
#include "util/json_types.h"
#include "util/log.h"
#include "util/log_text.h"

namespace ORBO {
namespace {

constexpr char kSource[] = "APIDownload.cpp";
constexpr char kDefaultMimeType[] = "application/octet-stream";
constexpr std::size_t kLongestName = 1024;

// Whether the handler has named the type by another spelling of the header's name; two
// types must not reach the client.
bool HasOtherSpelling(const Json::Value& headers) {
  for (auto header = headers.begin(); header != headers.end(); ++header) {
    const std::string name = header.name();
    if (name != kContentTypeHeader && IsSameHeader(name, kContentTypeHeader) &&
        JSON::IsString(*header)) {
      return true;
    }
  }
  return false;
}

}  // namespace

APIDownloadPrivate::APIDownloadPrivate(APIDownload* owner, APIResponse* response,
                                       bool owns_response)
    : owner_(owner), response_(response), owns_response_(owns_response) {}

APIDownloadPrivate::~APIDownloadPrivate() {
  if (owns_response_) {
    delete response_;
  }
}

bool APIDownloadPrivate::SetHeader(const std::string& name, const std::string& value) {
  return response_ != nullptr && response_->SetHeader(name, value);
}

bool APIDownloadPrivate::SetHeader(const Json::Value& headers) {
  if (!JSON::IsObject(headers)) {
    return false;
  }
  for (auto header = headers.begin(); header != headers.end(); ++header) {
    if (JSON::IsString(*header) && !SetHeader(header.name(), JSON::AsString(*header))) {
      return false;
    }
  }
  return true;
}

bool APIDownloadPrivate::SetAttachment(const std::string& name) {
  return !name.empty() && name.size() <= kLongestName &&
         SetHeader("Content-Disposition", AttachmentDisposition(name));
}

void APIDownloadPrivate::SetMimeTypeFromFileName(const std::string& name) {
  mime_type_ = HTTPFileOutputer::GetMimeType(name.c_str());
}

int APIDownloadPrivate::Output(const std::string& path) {
  // The file that would be opened is not the one that the handler has checked.
  if (path.find('\0') != std::string::npos) {
    return -EINVAL;
  }
  if (mime_type_.empty()) {
    mime_type_ = HTTPFileOutputer::GetMimeType(path.c_str());
  }
  return Answer([&] { return HTTPFileOutputer::Output(path.c_str(), mime_type_.c_str()); });
}

int APIDownloadPrivate::Output(std::FILE* file) {
  if (mime_type_.empty()) {
    mime_type_ = kDefaultMimeType;
  }
  return Answer([&] { return HTTPFileOutputer::Output(file, "", mime_type_.c_str()); });
}

void APIDownloadPrivate::PrintHeader() {
  if (response_ == nullptr) {
    return;
  }
  const Json::Value headers = response_->GetHeaders();
  const bool has_other_spelling = HasOtherSpelling(headers);
  std::string lines;
  for (auto header = headers.begin(); header != headers.end(); ++header) {
    const std::string name = header.name();
    if (!JSON::IsString(*header) || (has_other_spelling && name == kContentTypeHeader)) {
      continue;
    }
    if (!AppendHeaderLine(name, JSON::StringView(*header), lines)) {
      Log(LOG_ERR, "%s:%d header %s holds a line break and is left out", kSource, __LINE__,
          LogText(name).c_str());
    }
  }
  std::cout << lines;
}

void APIDownloadPrivate::EnableOutput(bool is_enabled) {
  if (response_ != nullptr) {
    response_->SetEnableOutput(is_enabled);
  }
}

template <typename Writer>
int APIDownloadPrivate::Answer(Writer write) {
  // The content goes past the stream object, which is all that a method's description
  // switches off.
  if (StreamGuard::IsSwitched(std::cout)) {
    Log(LOG_ERR, "%s:%d the method's description does not allow downloads", kSource, __LINE__);
    return -EPERM;
  }
  std::string replaced_type;
  if (response_ != nullptr && response_->GetHeader(kContentTypeHeader, "") == kDefaultContentType) {
    replaced_type = kDefaultContentType;
    SetHeader(kContentTypeHeader, mime_type_);
  }
  HeldOutput held(std::cout);
  int result = -ENOMEM;
  bool is_begun = false;
  const bool was_enabled = response_ == nullptr || response_->IsEnableOutput();
  try {
    // A body after the file would be read as the beginning of the next answer where the
    // client keeps the connection.
    EnableOutput(false);
    PrintHeader();
    const std::size_t header_size = held.text().size();
    result = write();
    // An outputer that has written something has begun an answer, whatever it says.
    is_begun = result >= 0 || held.text().size() != header_size;
  } catch (const std::exception&) {
    // There is no memory; JSON values say so by an exception of their own.  The answer
    // has not begun: nothing is allocated once the head is written.
  }
  if (!is_begun || held.is_lost()) {
    if (!replaced_type.empty()) {
      SetHeader(kContentTypeHeader, replaced_type);
    }
    EnableOutput(was_enabled);
    return held.is_lost() ? -ENOMEM : result;
  }
  held.Pass();
  return result;
}

}  // namespace ORBO
