#include "platform/access_token.h"

#include <cstring>

#include "platform/linux/token_store.h"

int OrboAccessTokenGrant(const char* token, const char* api, const char* method, char* user,
                         std::size_t size) {
  if (user == nullptr || size == 0) {
    return -1;
  }
  *user = '\0';
  ORBO::AccessToken found;
  if (token == nullptr || api == nullptr || method == nullptr ||
      !ORBO::FindToken(token, api, method, found) || found.user.size() >= size) {
    return -1;
  }
  std::memcpy(user, found.user.c_str(), found.user.size() + 1);
  return 0;
}
