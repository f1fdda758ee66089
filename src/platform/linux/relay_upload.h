#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/linux/relay_parameters.h"
#include "platform/linux/upload_body.h"
#include "platform/string_table.h"

namespace ORBO {

// The upload that this process serves, on its way to a target.
//
// Its body goes on as it came, from the first file on.  In front of it stand fields:
// those that the client put there, the parameters that are texts, the credential, and
// the names of the call.  So the target reads them as it reads those of any client that
// names its call in the form, neither the credential nor what came in a body appears in
// a URL, and no field of the client can name another call or credential.
class RelayUpload {
 public:
  // Reads the fields in front of the first file.  0, or a code of the library: the
  // body cannot be read, or a parameter cannot be a field.
  int Prepare(const RelayCall& call, const Json::Value& params, const std::string& token,
              const std::string& content_type);

  // What goes in front of the rest of the body.
  const std::string& head() const { return head_; }
  std::uint64_t rest_size() const { return rest_size_; }
  // Parameters that are no texts, which a field would make texts, as a parameter line:
  // those that stand in the URL of this process's request anyway.
  const std::string& query() const { return query_; }

  // Gives the next bytes of the rest: how many, 0 at its end, negative if they cannot
  // be read or do not come for `limit` seconds.
  std::int64_t ReadRest(char* buffer, std::size_t size, long limit);

 private:
  bool AddHead(const RelayCall& call, const Json::Value& params, const std::string& token,
               const QLIBSZHASH& fields);
  // `query` are the parameters in the URL of this process's request.
  bool AddParameter(const std::string& name, const Json::Value& value, const Json::Value& query);
  bool AddField(const std::string& name, const std::string& text);

  std::string boundary_;
  std::string head_;
  std::string query_;
  UploadBody* body_ = nullptr;  // the process's; not owned
  std::uint64_t rest_size_ = 0;
};

}  // namespace ORBO
