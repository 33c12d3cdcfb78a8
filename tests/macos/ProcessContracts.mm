// The application and the processes of others keep the contracts of their ports.

#include "platform/macos/MacAdapters.h"
#include "platform/macos/MacApplication.h"
#include "platform/macos/MacMainQueue.h"
#include "platform/posix/children/LaunchTool.h"
#include "support/contracts/ApplicationContract.h"
#include "support/contracts/RunningApplicationsContract.h"

#include <variant>

#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using testing::Values;

class RealApplication final : public ApplicationSubject {
public:
  Application& application() override { return application_; }

private:
  MacMainQueue mainQueue_;
  MacApplication application_{mainQueue_};
};

INSTANTIATE_TEST_SUITE_P(Mac, ApplicationContract,
                         Values(subject<ApplicationSubject, RealApplication>("real")), subjectName);

class RealRunningApplications final : public RunningApplicationsSubject {
public:
  RunningApplications& applications() override { return applications_; }
  std::int32_t start() override { return std::get<pid_t>(launchTool(CHILD_TOOL, {"wait"}, {})); }
  void end(std::int32_t process) override {
    applications_.sendKill(process);
    waitpid(process, nullptr, 0);
  }
  std::int32_t oldest() override { return getpid(); }

private:
  MacRunningApplications applications_;
};

INSTANTIATE_TEST_SUITE_P(
    Mac, RunningApplicationsContract,
    Values(subject<RunningApplicationsSubject, RealRunningApplications>("real")), subjectName);

} // namespace
} // namespace driftmark::test
