#include <sys/socket.h>
#include <unistd.h>

#include "platform/cgi.h"
#include "platform/linux/upload_rest.h"

void OrboCgiDiscardBody() {
  ORBO::EndUpload();
  // Some servers hand the body over by a local socket, and one that is closed
  // with unread data in it makes the server lose the end of the answer too.  What
  // has been sent is bounded by the socket's buffer, and nothing more arrives.
  // A pipe, which cannot be shut down, has no such effect.
  if (shutdown(STDIN_FILENO, SHUT_RD) != 0) {
    return;
  }
  char buffer[16384];
  while (read(STDIN_FILENO, buffer, sizeof buffer) > 0) {
  }
}
