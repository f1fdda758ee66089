#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace e2e {

struct HttpResponse {
  int status = 0;                         // 0 when there was no answer
  std::vector<std::string> header_lines;  // as received, without line ends
  std::string body;                       // with chunks put together
  double seconds = 0;                     // until the server closed the connection
  bool closed = false;                    // false when the time was over first

  // The values of every header line of that name, whatever its case.
  std::vector<std::string> Headers(const std::string& name) const;
};

enum class AfterRequest { kListen, kHangUp };

// Sends `request` as it stands to the loopback interface and reads until the
// server closes the connection, 30 seconds at most.  A server that answers
// before it has read everything is fine.  A client that hangs up sends nothing
// more and says so, yet reads on.
HttpResponse Exchange(std::uint16_t port, const std::string& request,
                      AfterRequest after = AfterRequest::kListen);

}  // namespace e2e
