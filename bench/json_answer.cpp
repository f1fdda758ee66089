// The same answer from a program that the JSON library, and with it the C++
// library, is loaded into: what no program of this system can go below.

#include <json/value.h>

#include <cstdio>

int main() {
  const Json::Value body("{\"success\":true}");
  return std::printf("Content-Type: text/plain; charset=\"UTF-8\"\r\n\r\n%s\n", body.asCString()) <
         0;
}
