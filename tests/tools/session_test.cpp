#include <gmock/gmock.h>
#include <unistd.h>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

class Sessions : public CommandTest {
 protected:
  // Opens a session and gives its id.
  std::string Open(const std::string& arguments) const {
    const std::string line = Output("session open " + arguments);
    EXPECT_THAT(line, ContainsRegex("^[A-Za-z][A-Za-z0-9_-]+\n$"));
    return line.substr(0, line.find('\n'));
  }
};

TEST_F(Sessions, OpenedSessionIsShownByIdAndHandleUntilItIsClosed) {
  const std::string id = Open("alice --address ::ffff:192.0.2.7 --timeout=5 --skip-address-check");
  Open("bob");

  const Json::Value shown = Document("session show --json " + id);
  EXPECT_EQ(shown["user"], "alice");
  EXPECT_EQ(shown["address"], "192.0.2.7");
  EXPECT_EQ(shown["timeout"], 5);
  EXPECT_EQ(shown["skip_address_check"], true);
  const std::string handle = shown["handle"].asString();
  EXPECT_EQ(Document("session show --json " + handle), shown);

  EXPECT_EQ(Output("session close " + handle), "");
  EXPECT_EQ(Run("session show " + id).exit_code, 1);
  EXPECT_EQ(Run("session close " + handle).exit_code, 1);
  EXPECT_EQ(Document("session list --json").size(), 1U);
}

TEST_F(Sessions, ListTellsStatesAndNoIds) {
  EXPECT_EQ(Document("session list --json"), Json::Value(Json::arrayValue));
  const std::string id = Open("a --timeout 1");
  const std::string unusable = Open("unusable");
  Open("another");
  const std::string directory = root() + "/run/orbo/sessions/";
  ASSERT_EQ(0, std::system(("touch -d '2 minutes ago' " + directory + id + "; chmod 666 " +
                            directory + unusable + "; touch " + directory + "notes")
                               .c_str()));

  const Json::Value list = Document("session list --json");
  ASSERT_EQ(list.size(), 2U);
  EXPECT_NE(list[0]["timed_out"], list[1]["timed_out"]);
  EXPECT_THAT(list.toStyledString(), Not(HasSubstr(id)));
  const std::string table = Output("session list");
  EXPECT_THAT(table, Not(HasSubstr(id)));
  EXPECT_THAT(table, ContainsRegex("2m ago +timed out"));

  EXPECT_EQ(Run("session show " + unusable).exit_code, 1);
  EXPECT_EQ(Run("session close " + unusable).exit_code, 0);
  EXPECT_EQ(access((directory + unusable).c_str(), F_OK), -1);
}

TEST_F(Sessions, ManyAreClosedByUserOrAltogether) {
  for (const char* user : {"alice", "bob", "alice", "carol"}) {
    Open(user);
  }
  EXPECT_EQ(Output("session close --user alice"), "2\n");
  EXPECT_EQ(Run("session close --user alice").exit_code, 1);
  EXPECT_EQ(Output("session close --all"), "2\n");
  EXPECT_EQ(Output("session close --all"), "0\n");
}

}  // namespace
}  // namespace tools
