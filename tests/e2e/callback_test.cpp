// Work that a handler leaves for after the answer.

#include "server_test.h"
#include "support/wait.h"

namespace e2e {

namespace {

class Callbacks : public ServerTest {};
E2E_UNDER_EVERY_SERVER(Callbacks);

TEST_P(Callbacks, RunOnceAndDoNotKeepTheClientWaiting) {
  const std::string root = server().root().path();
  const std::string marker = root + "/finished";

  const HttpResponse response = server().Get(Probe("later", "marker=finished"));
  EXPECT_EQ(ReadFile(marker), "");
  EXPECT_EQ(ReadFile(marker + ".runs"), "");
  EXPECT_EQ(response.body, "{\"success\":true}\n");
  EXPECT_TRUE(response.closed);
  // The callbacks begin a second after the answer and take three more.
  EXPECT_LT(response.seconds, 1.0);

  ASSERT_TRUE(WaitForChange(
      root, [&marker] { return ReadFile(marker).find('\n') != std::string::npos; },
      std::chrono::seconds(30)));
  EXPECT_EQ(ReadFile(marker + ".runs"), "run\n");
  // In a session of its own: the id of the session is that of the process.
  const std::string ids = ReadFile(marker);
  const std::size_t blank = ids.find(' ');
  EXPECT_EQ(ids.substr(0, blank) + "\n", ids.substr(blank + 1));
}

}  // namespace

}  // namespace e2e
