/* The least that a CGI program can do: the unit of the time ratios. */

#include <stdio.h>

int main(void) {
  return puts("Content-Type: text/plain; charset=\"UTF-8\"\r\n\r\n{\"success\":true}") < 0;
}
