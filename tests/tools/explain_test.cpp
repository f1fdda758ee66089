#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "CommandRun.h"

namespace tools {
namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;
using ::testing::HasSubstr;

// That the codes are those of the CGI program is tested with the servers.
class Explain : public CommandTest {
 protected:
  void Describe() const {
    const std::string directory = root() + "/usr/orbo/orboman/webapi/";
    fs::create_directories(directory);
    fs::create_directories(root() + "/etc/orbo/privileges");
    fs::copy_file(std::string(TOOLS_MODULES) + "/good.so", directory + "good.so");
    std::ofstream(root() + "/etc/orbo/platform.conf") << "administrators=boss\n";
    std::ofstream(root() + "/etc/orbo/privileges/ORBO.P") << "user ben 192.0.2.0/24\n";
    std::ofstream(directory + "lib.def") << R"({"allowUser": ["admin.local"]})";
    std::ofstream(directory + "ORBO.Test.lib") << R"({
"ORBO.Test.Good": {"lib": "./good.so", "minVersion": 1, "maxVersion": 1,
  "authLevel": 2,
  "methods": {"1": ["echo", "gone",
    {"checked": {"allowUser": ["normal.local"]}}]}},
"ORBO.Test.Own": {"lib": "none", "minVersion": 1, "maxVersion": 2, "methods": {"1": ["list"]},
  "appPriv": "ORBO.P",
  "allowUser": ["normal.local"]},
"ORBO.Test.Bad": {"minVersion": 1}})";
  }
};

TEST_F(Explain, NamesTheStepAndTheRuleThatDecide) {
  Describe();
  const struct {
    const char* arguments;
    const char* line;     // of a step, without its blanks
    const char* verdict;  // its end
  } rows[] = {
      {"Good echo", "session ignored 119 neither", "served, unless the check refuses it.\n"},
      {"Good echo --user ben",
       "user class ignored 105 normal.local, allowUser is "
       "[\"admin.local\"]: the default of lib.def",
       "refuses it.\n"},
      {"Good echo",
       "check depends - the library's common check function judges the request, and "
       "sees error 119",
       "refuses it.\n"},
      {"Good checked --user ben",
       "user class passes - normal.local, allowUser is "
       "[\"normal.local\"]: DIR/ORBO.Test.lib:5",
       "refuses it.\n"},
      {"Good ecko",
       "method refuses 103 not in a list of version 1 at DIR/ORBO.Test.lib:4; did you "
       "mean \"echo\"?",
       "not listed for this version.\n"},
      {"Own list --version 3", "version refuses 104 the range is 1 to 2: DIR/ORBO.Test.lib:6",
       "out of range.\n"},
      {"Own list --version 1 --user ben",
       "privilege refuses 105 \"ORBO.P\", from an unknown "
       "address: DIR/ORBO.Test.lib:7",
       "no privilege.\n"},
      {"Own list --version 1 --user ben --address 192.0.2.9",
       "library refuses 111 the library "
       "cannot be opened: none",
       "error 111: the handler library is not available.\n"},
      {"Bad get",
       "description refuses 102 DIR/ORBO.Test.lib:9: the loader leaves this API out: "
       "\"lib\" is missing",
       "error 102: the API is not described.\n"},
      {"None get", "description refuses 102 DIR/ORBO.Test.lib does not describe it",
       "described.\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.arguments);
    const Result result = Run(std::string("explain ORBO.Test.") + row.arguments);
    std::string steps = result.output;
    const std::string directory = root() + "/usr/orbo/orboman/webapi";
    for (std::size_t at = 0; (at = steps.find("  ")) != std::string::npos;) {
      steps.erase(at, 1);
    }
    for (std::size_t at = 0; (at = steps.find(directory)) != std::string::npos;) {
      steps.replace(at, directory.size(), "DIR");
    }
    EXPECT_THAT(steps, HasSubstr(std::string("\n") + row.line));
    EXPECT_THAT(steps, EndsWith(row.verdict));
    EXPECT_EQ(result.exit_code, steps.find("refused") != std::string::npos ? 1 : 0);
  }
}

}  // namespace
}  // namespace tools
