/* Prints a TCP port of the loopback interface that is free now, as the kernel chooses
 * it. */

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdio.h>
#include <sys/socket.h>

int main(void) {
  struct sockaddr_in address = {.sin_family = AF_INET};
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  const int probe = socket(AF_INET, SOCK_STREAM, 0);
  if (bind(probe, (struct sockaddr*)&address, size) != 0 ||
      getsockname(probe, (struct sockaddr*)&address, &size) != 0) {
    perror("free_port");
    return 1;
  }
  printf("%d\n", ntohs(address.sin_port));
  return 0;
}
