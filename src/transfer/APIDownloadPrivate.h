#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include <webapi/APIDownload.h>

#include "platform/file_output.h"

namespace ORBO {

// The state and the rules of APIDownload.
class APIDownloadPrivate {
 public:
  // Without `response` none can be set; with `owns_response` it is deleted at the end.
  APIDownloadPrivate(APIDownload* owner, APIResponse* response, bool owns_response);
  ~APIDownloadPrivate();

  APIDownloadPrivate(const APIDownloadPrivate&) = delete;
  APIDownloadPrivate& operator=(const APIDownloadPrivate&) = delete;

  bool SetHeader(const std::string& name, const std::string& value);
  bool SetHeader(const Json::Value& headers);
  bool SetAttachment(const std::string& name);
  void SetMimeType(const std::string& type) { mime_type_ = type; }
  void SetMimeTypeFromFileName(const std::string& name);

  int Output(const std::string& path);
  int Output(std::FILE* file);

 private:
  // Writes the response's headers to standard output.
  void PrintHeader();
  void EnableOutput(bool is_enabled);
  // Prints the headers and calls `write`, which gives its result; takes back what was
  // done where that failed.
  template <typename Writer>
  int Answer(Writer write);

  [[maybe_unused]] APIDownload* owner_;  // not owned
  APIResponse* response_;                // owned with owns_response_; may be null
  std::string mime_type_;                // empty: decided at output
  [[maybe_unused]] HTTPFileOutputer outputer_;
  bool owns_response_;
};

}  // namespace ORBO
