#include "platform/last_error.h"

namespace {

int g_error = 0;

}  // namespace

void QLIBCErrSet(int error) { g_error = error; }

int QLIBCErrGet() { return g_error; }
