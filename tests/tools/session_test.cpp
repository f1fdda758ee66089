#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <ctime>

#include "CommandRun.h"

namespace tools {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

class Sessions : public CommandTest {
 protected:
  // Opens a session and gives its id.
  std::string Open(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"session", "open"});
    const std::string line = Output(arguments);
    EXPECT_THAT(line, ContainsRegex("^[A-Za-z][A-Za-z0-9_-]+\n$"));
    return line.substr(0, line.find('\n'));
  }

  std::string FileOf(const std::string& id) const { return root() + "/run/orbo/sessions/" + id; }
};

TEST_F(Sessions, OpenedSessionIsShownByIdAndHandleUntilItIsClosed) {
  const std::string id = Open({"alice", "--address", "::ffff:192.0.2.7", "--timeout=5",
                               "--application", "files", "--skip-address-check"});
  Open({"bob"});

  const Json::Value shown = Document({"session", "show", id, "--json"});
  EXPECT_EQ(shown["user"], "alice");
  EXPECT_EQ(shown["address"], "192.0.2.7");
  EXPECT_EQ(shown["application"], "files");
  EXPECT_EQ(shown["timeout"], 5);
  EXPECT_EQ(shown["skip_address_check"], true);
  EXPECT_EQ(shown["timed_out"], false);
  const std::string handle = shown["handle"].asString();
  EXPECT_EQ(Document({"session", "show", "--json", handle}), shown);
  EXPECT_THAT(Output({"session", "show", handle}), HasSubstr("alice"));

  EXPECT_EQ(Output({"session", "close", handle}), "");
  EXPECT_EQ(Run({"session", "show", id}).exit_code, 1);
  EXPECT_EQ(Run({"session", "close", handle}).exit_code, 1);
  EXPECT_EQ(Document({"session", "list", "--json"}).size(), 1U);
}

TEST_F(Sessions, ListsTellNoIdAndLineTheirColumnsUp) {
  EXPECT_EQ(Document({"session", "list", "--json"}), Json::Value(Json::arrayValue));
  const std::string id = Open({"a"});
  Open({"a-longer-name", "--address", "2001:db8::1"});

  EXPECT_THAT(Output({"session", "list", "--json"}), Not(HasSubstr(id)));
  const std::string table = Output({"session", "list"});
  EXPECT_THAT(table, Not(HasSubstr(id)));
  EXPECT_THAT(table, Not(HasSubstr("\x1b")));
  // The addresses begin below their heading.
  const std::size_t first = table.find('\n') + 1;
  const std::size_t second = table.find('\n', first) + 1;
  const std::size_t column = table.find("ADDRESS");
  const std::size_t address = table.find("2001:db8::1");
  EXPECT_EQ(address - (address > second ? second : first), column);
}

TEST_F(Sessions, TimedOutSessionIsListedAsSuch) {
  const std::string id = Open({"alice", "--timeout", "1"});
  const std::time_t then = std::time(nullptr) - 120;
  const utimbuf times = {then, then};
  ASSERT_EQ(utime(FileOf(id).c_str(), &times), 0);

  const Json::Value list = Document({"session", "list", "--json"});
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0]["timed_out"], true);
  EXPECT_EQ(list[0]["last_active"], Json::Int64{then});
  EXPECT_THAT(Output({"session", "list"}), ContainsRegex("2m ago +timed out"));
}

TEST_F(Sessions, ManyAreClosedByUserOrAltogether) {
  for (const char* user : {"alice", "bob", "alice", "carol"}) {
    Open({user});
  }
  EXPECT_EQ(Output({"session", "close", "--user", "alice"}), "2\n");
  EXPECT_EQ(Run({"session", "close", "--user", "alice"}).exit_code, 1);
  EXPECT_EQ(Output({"session", "close", "--all"}), "2\n");
  EXPECT_EQ(Output({"session", "close", "--all"}), "0\n");
}

TEST_F(Sessions, UnusableFileCanBeClosedByItsId) {
  const std::string id = Open({"alice"});
  ASSERT_EQ(chmod(FileOf(id).c_str(), 0666), 0);
  EXPECT_EQ(Run({"session", "show", id}).exit_code, 1);
  EXPECT_EQ(Run({"session", "close", id}).exit_code, 0);
  EXPECT_EQ(access(FileOf(id).c_str(), F_OK), -1);
}

}  // namespace
}  // namespace tools
