// The CGI program: every request to it is one call of a web API.

#include <webapi/WebEntry.h>

int main(int argc, char** argv) {
  ORBO::WebEntry entry;
  entry.SetArgs(argc, argv);
  entry.Run(Json::Value());
  return 0;
}
