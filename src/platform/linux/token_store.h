#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ORBO {

// Access tokens, one file each below /var/lib/orbo/tokens.  A token's text is
// "t1.<id>.<secret>"; the file keeps a keyed hash of the secret and never the
// secret.

// One API that a token may call; "*" in `methods` stands for all of them.
struct TokenScope {
  std::string api;
  std::vector<std::string> methods;
};

struct AccessToken {
  std::string id;
  std::string user;
  std::string note;  // free text for people
  std::vector<TokenScope> scopes;
  std::int64_t created = 0;  // seconds since the epoch
  std::int64_t expires = 0;  // seconds since the epoch; 0 never
};

// Makes a token and gives its text, which is shown once and kept nowhere.  Fills
// the id and the creation time of `token`.  False, with `errno` set, if it cannot
// be stored; EINVAL if it names no user or an API or method is missing, ENOSYS where
// the crypto module cannot be used.
bool CreateToken(AccessToken& token, std::string& text);

// The stored tokens, in order of creation.
std::vector<AccessToken> ListTokens();

// False if there is none of that id.
bool RevokeToken(const std::string& id);

// Whether `text` is a stored token that has not expired and may call `method` of
// `api`; fills `out`.
bool FindToken(const std::string& text, const std::string& api, const std::string& method,
               AccessToken& out);

}  // namespace ORBO
