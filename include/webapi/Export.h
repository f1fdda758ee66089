#pragma once

// Marks what the shared library exports.  Everything else is hidden, so that
// the loader has few symbols to resolve when a CGI process starts.
#define WEBAPI_EXPORT __attribute__((visibility("default")))
