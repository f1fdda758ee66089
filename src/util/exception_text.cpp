#include "util/exception_text.h"

#include <exception>

#include "util/log_text.h"

namespace ORBO {

std::string CurrentExceptionText() {
  try {
    throw;
  } catch (const std::exception& error) {
    return LogText(error.what());
  } catch (...) {
    return "unknown exception";
  }
}

}  // namespace ORBO
