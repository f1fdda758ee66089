#include "unit/fake_confinement.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "platform/confinement.h"
#include "util/hat_token.h"

namespace ORBO {

FakeConfinement& FakeConfinement::Get() {
  static FakeConfinement* const fake = new FakeConfinement;
  return *fake;
}

}  // namespace ORBO

int ORBO_aa_has_profile_restricted() { return ORBO::FakeConfinement::Get().confined ? 1 : 0; }

int ORBO_aa_change_hat(const char* hat, unsigned long token) {
  ORBO::FakeConfinement& fake = ORBO::FakeConfinement::Get();
  EXPECT_EQ(ORBO::kHatToken, token);
  fake.changes.emplace_back(hat == nullptr ? "-" : hat);
  if (hat == nullptr ? fake.may_leave : fake.hats.count(hat) != 0) {
    return 0;
  }
  errno = EACCES;
  return -1;
}
