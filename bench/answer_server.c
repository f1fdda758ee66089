/* An HTTP server on the loopback interface that answers every request at once as a web
 * API does: what calls are relayed to.  Prints its port, and serves until it is killed. */

#define _GNU_SOURCE

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

enum { kLargest = 65536 };

static const char kAnswer[] =
    "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 42\r\n"
    "Connection: close\r\n\r\n"
    "{\"data\":{\"text\":\"hello\"},\"success\":true}\r\n";

static int IsWhole(const char* request, size_t size) {
  const char* const length = strstr(request, "Content-Length: ");
  const char* const head_end = strstr(request, "\r\n\r\n");
  return head_end != NULL && length != NULL &&
         size >= (size_t)(head_end - request) + 4 + strtoul(length + 16, NULL, 10);
}

static void Serve(int client) {
  static char request[kLargest + 1];
  size_t size = 0;
  ssize_t count = 1;
  request[0] = '\0';
  while (!IsWhole(request, size) && size < kLargest && count > 0) {
    count = recv(client, request + size, kLargest - size, 0);
    size += count > 0 ? (size_t)count : 0;
    request[size] = '\0';
  }
  send(client, kAnswer, sizeof kAnswer - 1, MSG_NOSIGNAL);
}

int main(void) {
  struct sockaddr_in address = {.sin_family = AF_INET};
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  if (bind(listener, (struct sockaddr*)&address, size) != 0 || listen(listener, 8) != 0 ||
      getsockname(listener, (struct sockaddr*)&address, &size) != 0) {
    perror("answer_server");
    return 1;
  }
  printf("%d\n", ntohs(address.sin_port));
  fflush(stdout);
  for (int client; (client = accept(listener, NULL, NULL)) >= 0; close(client)) {
    Serve(client);
  }
  return 1;
}
