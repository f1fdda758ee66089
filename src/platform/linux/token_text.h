#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "platform/linux/token_store.h"

namespace ORBO {

// The content of token files: a JSON object with the token's facts and the keyed
// hash of its text.
struct StoredToken {
  AccessToken token;
  std::string hash;
};

// Whether the token names a user, and APIs and methods to call.
bool IsStorableToken(const AccessToken& token);

// The scopes as a list of objects with "api" and "methods".
Json::Value ScopesToJson(const std::vector<TokenScope>& scopes);

std::string ToTokenText(const StoredToken& stored);

// False, and `out` unchanged, if `text` is no such object.  The id, which is the
// file's name, is left empty.
bool FromTokenText(const std::string& text, StoredToken& out);

}  // namespace ORBO
