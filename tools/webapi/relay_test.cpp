#include <algorithm>
#include <chrono>

#include "Arguments.h"
#include "output.h"
#include "platform/linux/relay_exchange.h"
#include "relay_view.h"

namespace ORBO::tool {
namespace {

constexpr Option kOptions[] = {kNoMoreOptions};

constexpr char kDetails[] =
    "\n"
    "Without an id all of them.  The target gets a request without a call and without the\n"
    "token, and has to refuse it as a web API does: so its address, its certificate and\n"
    "the way there are right, and nothing was run.  Whether the token is good shows when\n"
    "a call is relayed.\n"
    "\n"
    "Examples:\n"
    "  webapi relay test\n"
    "  webapi relay test 5\n";

// Asks the target; the reason in `problem` if that fails.
bool Ask(const RelayTarget& target, std::string& problem) {
  RelayExchange exchange = BeginRelayExchange(target, false, 0);
  exchange.headers.emplace_back("Content-Type: application/x-www-form-urlencoded");
  exchange.body = "version=1";
  RelayAnswer answer;
  MakeRelayExchange(exchange, answer);
  CheckRelayAnswer(false, answer);
  problem = answer.message + " (error " + std::to_string(answer.error) + ")";
  return answer.error == 0;
}

bool Test(const ListedTarget& listed) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  const std::string name = "target " + std::to_string(listed.id);
  std::string problem = listed.problem;
  if (!problem.empty() || !Ask(listed.target, problem)) {
    Complain(name + ": " + problem);
    return false;
  }
  const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  return Print(name + ": answers in " + std::to_string(time.count()) +
               " ms; trust: " + TrustText(listed.target) + "\n");
}

ExitCode Run(const Arguments& arguments) {
  std::vector<ListedTarget> targets;
  if (!LoadTargets(targets)) {
    return kFailed;
  }
  bool passed = true;
  for (const std::string& id : arguments.operands()) {
    const bool is_known =
        std::any_of(targets.begin(), targets.end(),
                    [&id](const ListedTarget& listed) { return std::to_string(listed.id) == id; });
    if (!is_known) {
      Complain("there is no target " + id);
      passed = false;
    }
  }
  for (const ListedTarget& listed : targets) {
    const std::vector<std::string>& ids = arguments.operands();
    if (ids.empty() || std::find(ids.begin(), ids.end(), std::to_string(listed.id)) != ids.end()) {
      passed = Test(listed) && passed;
    }
  }
  return passed ? kDone : kFailed;
}

}  // namespace

const Command kRelayTest = {
    "test", "Asks targets whether they answer", "[ID...]", 0, kAnyNumber, kOptions, kDetails, Run,
    nullptr};

}  // namespace ORBO::tool
