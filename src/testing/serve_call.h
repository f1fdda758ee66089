#pragma once

#include <string>

#include "testing/SystemTree.h"
#include "testing/cgi_request.h"

namespace ORBO {

// The files by which a call gets into its process, and its output out.
bool WriteCall(const SystemTree& tree, const CgiRequest& request);
std::string ReadOutput(const SystemTree& tree);

// Makes this process that of the CGI program and serves the call that was written.
void ServeCall(const SystemTree& tree, bool skip_permission);

}  // namespace ORBO
