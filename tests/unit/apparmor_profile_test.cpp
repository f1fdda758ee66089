#include "platform/linux/apparmor_profile.h"

#include <gtest/gtest.h>

namespace ORBO {
namespace {

TEST(AppArmorProfile, OnlyTheUnconfinedAreNotConfined) {
  const struct {
    std::string_view text;
    bool confining;
  } rows[] = {
      {"unconfined\n", false},
      {"unconfined", false},
      {{"unconfined\0", 11}, false},
      {"webapi (enforce)\n", true},
      {"webapi//ORBO.Core.Share.list (complain)\n", true},
      {"webapi (unconfined)\n", false},
      {"unconfined (enforce)\n", true},
      {"not unconfined\n", true},
      {"(unconfined) (enforce)", true},
      {"", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.confining, IsConfining(row.text));
  }
}

}  // namespace
}  // namespace ORBO
