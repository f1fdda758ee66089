#include "entry/last_answer.h"

#include "util/write_file.h"

#include <unistd.h>

namespace ORBO {
namespace {

constexpr char kAnswer[] =
    "Content-type: application/json; charset=\"UTF-8\"\r\n"
    "Cache-Control: max-age=0, no-cache, no-store, must-revalidate\r\n"
    "Pragma: no-cache\r\n"
    "Expires: 0\r\n"
    "\r\n"
    "{\"error\":{\"code\":117},\"success\":false}\n";

}  // namespace

void WriteLastAnswer() { WriteAll(STDOUT_FILENO, {kAnswer, sizeof kAnswer - 1}); }

}  // namespace ORBO
