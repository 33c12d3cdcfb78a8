// The fake of the child processes keeps the contract of its port.

#include "support/TestPlatform.h"
#include "support/contracts/ChildProcessesContract.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {
namespace {

using testing::Values;

/// Executes the steps of the helper tool on the fake.
class FakeChildProcesses final : public ChildProcessesSubject {
public:
  FakeChildProcesses() {
    platform_.childProcesses.onSpawn(
        [](TestChild& child) { play(child, child.command().arguments, 0); });
  }

  ChildProcesses& childProcesses() override { return platform_.childProcesses; }
  bool runUntil(const std::function<bool()>& done) override { return platform_.runUntil(done); }
  void async(std::function<void()> task) override { platform_.mainQueue.async(std::move(task)); }

  ToolCommand tool(const std::vector<std::string>& steps) override {
    ToolResult result;
    for (std::size_t step = 0; step < steps.size(); ++step) {
      if (const auto text = printed(steps, step)) {
        if (steps[step] != "print-error")
          result.output += *text;
      } else if (steps[step] == "exit" || steps[step] == "raise") {
        result.exitStatus = std::stoi(steps[step + 1]);
        break;
      } else if (steps[step] == "wait") {
        platform_.childProcesses.hang(steps, result.output);
        return {.executable = "/fake/tool", .arguments = steps};
      }
      step += operands(steps[step]);
    }
    platform_.childProcesses.script(steps, result);
    return {.executable = "/fake/tool", .arguments = steps};
  }

  ToolCommand missingTool() override { return failing("missing", "no such file"); }
  ToolCommand forbiddenTool() override { return failing("forbidden", "permission denied"); }

private:
  static std::size_t operands(const std::string& step) {
    if (step == "wait" || step == "print-input-size")
      return 0;
    return step == "print-many" ? 2 : 1;
  }

  /// The text that a step prints at once; absent for the other steps.
  static std::optional<std::string> printed(const std::vector<std::string>& steps,
                                            std::size_t step) {
    std::string text;
    if (steps[step] == "print" || steps[step] == "print-error") {
      text = steps[step + 1];
    } else if (steps[step] == "print-many") {
      for (int count = std::stoi(steps[step + 1]); count > 0; --count)
        text += steps[step + 2];
    } else if (steps[step] == "print-bytes") {
      for (std::size_t digit = 0; digit < steps[step + 1].size(); digit += 2)
        text += static_cast<char>(std::stoi(steps[step + 1].substr(digit, 2), nullptr, 16));
    } else if (steps[step] == "print-input-size") {
      text = "0";
    } else {
      return std::nullopt;
    }
    return text;
  }

  static void play(TestChild& child, const std::vector<std::string>& steps, std::size_t step) {
    for (; step < steps.size(); step += 1 + operands(steps[step])) {
      if (const auto text = printed(steps, step)) {
        child.print(*text);
      } else if (steps[step] == "wait") {
        return;
      } else if (steps[step] == "print-when-terminated") {
        child.onTerminate([steps, step](TestChild& terminated) {
          terminated.print(steps[step + 1]);
          play(terminated, steps, step + 2);
        });
        return;
      } else {
        break;
      }
    }
    child.exit();
  }

  ToolCommand failing(const std::string& name, const std::string& description) {
    platform_.childProcesses.failLaunches(
        {name}, {.stage = LaunchError::Stage::launch, .description = description});
    return {.executable = "/fake/" + name, .arguments = {name}};
  }

  TestPlatform platform_;
};

INSTANTIATE_TEST_SUITE_P(Fake, ChildProcessesContract,
                         Values(subject<ChildProcessesSubject, FakeChildProcesses>("fake")),
                         subjectName);

} // namespace
} // namespace driftmark::test
