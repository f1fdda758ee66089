#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "platform/confinement.h"
#include "platform/linux/apparmor_profile.h"
#include "runner/HatGuard.h"
#include "unit/LogCapture.h"
#include "util/hat_token.h"

namespace {

using Names = std::vector<std::string>;

// What the confinement operations of this test program do: the machine's kernel
// may have no AppArmor.
struct {
  bool confined = false;
  std::set<std::string> hats;  // the hats that exist
  Names changes;               // hats entered or tried, "-" for leaving
} g_fake;

}  // namespace

int ORBO_aa_has_profile_restricted() { return g_fake.confined ? 1 : 0; }

int ORBO_aa_change_hat(const char* hat, unsigned long token) {
  EXPECT_EQ(ORBO::kHatToken, token);
  g_fake.changes.emplace_back(hat == nullptr ? "-" : hat);
  errno = EACCES;
  return hat == nullptr || g_fake.hats.count(hat) != 0 ? 0 : -1;
}

namespace ORBO {
namespace {

class Hat : public testing::Test {
 protected:
  void SetUp() override { g_fake.confined = true; }
  void TearDown() override {
    g_fake = {};
    unsetenv("APPARMOR_HAT_ARRAY");
  }

  static std::string Hats() {
    const char* text = std::getenv("APPARMOR_HAT_ARRAY");
    return text == nullptr ? "unset" : text;
  }

  LogCapture log_;
};

TEST_F(Hat, TheFirstHatThatExistsIsTaken) {
  const std::tuple<std::set<std::string>, Names, const char*> rows[] = {
      {{"A.B.m", "A.B"}, {"A.B.m", "-"}, R"(["A.B.m"])"},
      {{"A.B", "DefaultHat"}, {"A.B.m", "A.B", "-"}, R"(["A.B"])"},
      {{"DefaultHat"}, {"A.B.m", "A.B", "DefaultHat", "-"}, R"(["DefaultHat"])"},
      {{}, {"A.B.m", "A.B", "DefaultHat", "-"}, R"(["EmptyHat"])"},
  };
  for (const auto& [hats, changes, listed] : rows) {
    SCOPED_TRACE(listed);
    g_fake.hats = hats;
    g_fake.changes.clear();
    {
      HatGuard guard("A.B", "m");
      EXPECT_EQ(listed, Hats());
    }
    EXPECT_EQ("[]", Hats());
    EXPECT_EQ(changes, g_fake.changes);
  }
  EXPECT_TRUE(log_.Has(" AppArmor: chagehat failed [Permission denied]"));
  g_fake = {};
  { HatGuard guard("A.B", "m"); }
  EXPECT_TRUE(g_fake.changes.empty()) << "not confined";
}

TEST_F(Hat, ACallInsideACallGoesBackToTheOuterHat) {
  setenv("APPARMOR_HAT_ARRAY", R"(["Outer.get"])", 1);
  g_fake.hats = {"Inner.get", "Outer.get"};
  {
    HatGuard guard("Inner", "get");
    EXPECT_EQ(R"(["Outer.get","Inner.get"])", Hats());
  }
  EXPECT_EQ(R"(["Outer.get"])", Hats());
  EXPECT_EQ(Names({"Inner.get", "Outer.get"}), g_fake.changes);
  g_fake.hats = {"Inner.get"};
  { HatGuard guard("Inner", "get"); }
  EXPECT_TRUE(log_.Has(" AppArmor: chagehat [Outer.get] failed [Permission denied]"));
}

TEST(AppArmorProfile, OnlyTheUnconfinedAreNotConfined) {
  for (const std::string_view text :
       {std::string_view("unconfined\n"), std::string_view("unconfined\0", 11),
        std::string_view("webapi (unconfined)\n")}) {
    EXPECT_FALSE(IsConfining(text)) << text;
  }
  for (const char* text : {"", "webapi (enforce)\n", "webapi//A.list (complain)\n",
                           "unconfined (enforce)\n", "not unconfined\n"}) {
    EXPECT_TRUE(IsConfining(text)) << text;
  }
}

}  // namespace
}  // namespace ORBO
