#pragma once

#include <cstddef>

// What the module webapi-KEP5-crypto.so exports.

extern "C" {

// HMAC-SHA256 (RFC 2104) of `data` under `key` into `out` of 32 bytes.  1 on
// success, else 0.
int WebapiHmacSHA256(const unsigned char* key, std::size_t key_size, const unsigned char* data,
                     std::size_t data_size, unsigned char* out);

}  // extern "C"
