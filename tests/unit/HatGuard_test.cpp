#include "runner/HatGuard.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "unit/LogCapture.h"
#include "unit/fake_confinement.h"

namespace ORBO {
namespace {

using Names = std::vector<std::string>;

class Hat : public testing::Test {
 protected:
  void SetUp() override {
    fake_ = FakeConfinement();
    fake_.confined = true;
  }
  void TearDown() override {
    fake_ = FakeConfinement();
    unsetenv("APPARMOR_HAT_ARRAY");
  }

  static std::string Hats() {
    const char* text = std::getenv("APPARMOR_HAT_ARRAY");
    return text == nullptr ? "unset" : text;
  }

  FakeConfinement& fake_ = FakeConfinement::Get();
  LogCapture log_;
};

TEST_F(Hat, NothingHappensWithoutConfinement) {
  fake_.confined = false;
  {
    HatGuard guard("A.B", "m");
    EXPECT_EQ("unset", Hats());
  }
  EXPECT_EQ("unset", Hats());
  EXPECT_TRUE(fake_.changes.empty());
}

TEST_F(Hat, TheFirstHatThatExistsIsTaken) {
  const struct {
    std::set<std::string> hats;
    Names changes;
    const char* listed;
  } rows[] = {
      {{"A.B.m", "A.B"}, {"A.B.m", "-"}, R"(["A.B.m"])"},
      {{"A.B", "DefaultHat"}, {"A.B.m", "A.B", "-"}, R"(["A.B"])"},
      {{"DefaultHat"}, {"A.B.m", "A.B", "DefaultHat", "-"}, R"(["DefaultHat"])"},
      {{}, {"A.B.m", "A.B", "DefaultHat", "-"}, R"(["EmptyHat"])"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.listed);
    fake_.hats = row.hats;
    fake_.changes.clear();
    {
      HatGuard guard("A.B", "m");
      EXPECT_EQ(row.listed, Hats());
    }
    EXPECT_EQ("[]", Hats());
    EXPECT_EQ(row.changes, fake_.changes);
  }
  EXPECT_EQ(1U, log_.lines().size());
  EXPECT_TRUE(log_.Has(" AppArmor: chagehat failed [Permission denied]"));
}

TEST_F(Hat, ACallInsideACallGoesBackToTheOuterHat) {
  setenv("APPARMOR_HAT_ARRAY", R"(["Outer.get"])", 1);
  fake_.hats = {"Inner.get", "Outer.get"};
  {
    HatGuard guard("Inner", "get");
    EXPECT_EQ(R"(["Outer.get","Inner.get"])", Hats());
  }
  EXPECT_EQ(R"(["Outer.get"])", Hats());
  EXPECT_EQ(Names({"Inner.get", "Outer.get"}), fake_.changes);
}

TEST_F(Hat, FailuresToGoBackAreLogged) {
  fake_.hats = {"A.m"};
  fake_.may_leave = false;
  { HatGuard guard("A", "m"); }
  EXPECT_TRUE(log_.Has(" AppArmor: chagehat Original Hat failed [Permission denied]"));
  setenv("APPARMOR_HAT_ARRAY", R"(["Gone"])", 1);
  { HatGuard guard("A", "m"); }
  EXPECT_TRUE(log_.Has(" AppArmor: chagehat [Gone] failed [Permission denied]"));
  setenv("APPARMOR_HAT_ARRAY", "{not json", 1);
  { HatGuard guard("A", "m"); }
  EXPECT_EQ("[]", Hats());
}

}  // namespace
}  // namespace ORBO
