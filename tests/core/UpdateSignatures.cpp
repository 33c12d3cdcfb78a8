// Which reports about a signature make a bundle the vendor's.

#include "UpdateInstallTest.h"

#include <string>

namespace driftmark::test {
namespace {

TEST_F(UpdateInstallTest, invalidSignatureEndsVerificationAtFirstStep) {
  platform.childProcesses.script(checkSignature, ToolResult{"", 1});
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("The update's code signature is invalid."));
  EXPECT_THAT(platform.childProcesses.runs(describe), testing::IsEmpty());
  expectUntouched();
}

TEST_F(UpdateInstallTest, verifierLaunchErrorIsReported) {
  platform.childProcesses.failLaunches(checkSignature,
                                       {LaunchError::Stage::launch, "No such tool"});
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("No such tool"));
  expectUntouched();
}

TEST_F(UpdateInstallTest, signatureOfOtherTeamIsRefused) {
  for (const std::string description :
       {"TeamIdentifier=AAAAAAAAAA", "TeamIdentifier=not set", "", "TeamIdentifier=t4n8rw2kqz",
        "TeamIdentifier=T4N8RW2KQZ\xff"}) {
    platform.childProcesses.script(describe, description);
    install();
    EXPECT_THAT(platform.dialogs.take(), failed("The update was not signed by Tallowmere."))
        << description;
    expectUntouched();
  }
}

TEST_F(UpdateInstallTest, reportThatOnlyLooksLikeVendorsIsRefused) {
  const std::string team = "TeamIdentifier=T4N8RW2KQZ";
  const std::string adHoc = "TeamIdentifier=not set\n";
  const std::string other = "TeamIdentifier=AAAAAAAAAA\n";
  for (const std::string& report : {
           // The names of executable and identifier are the signer's choice, line ends included.
           "Executable=/x/" + team + "\nIdentifier=x\n" + adHoc,
           "Executable=/x/\n" + team + "\nIdentifier=x\n" + adHoc,
           "Executable=/x/A\nIdentifier=" + team + "\n" + other,
           "Executable=/x/A\nIdentifier=x\n" + team + "\n" + other,
           adHoc + team + "\n",
           team + "\n" + adHoc + team + "\n",
           // A line is the vendor's as a whole or not at all.
           "x" + team,
           " " + team,
           "\t" + team,
           "\r" + team,
           team + "x",
           team + " ",
           team + "\r\n",
           team + "\n" + team + "x\n",
           team + "\n" + team + std::string(1, '\0') + "\n",
           std::string("teamIdentifier=T4N8RW2KQZ"),
           std::string("TeamIdentifier= T4N8RW2KQZ"),
           std::string("TeamIdentifier=\nT4N8RW2KQZ"),
           team + "\nTeamIdentifier=",
           "Identifier=\xe2\x80\xa8" + team + "\n", // a line separator of Unicode ends no line
           "Identifier=\f" + team + "\v" + team + "\n",
       }) {
    platform.childProcesses.script(describe, report);
    install();
    EXPECT_THAT(platform.dialogs.take(), failed("The update was not signed by Tallowmere."))
        << report;
    expectUntouched();
  }
}

/// No certificate stands behind what an ad hoc signature says of its team.
TEST_F(UpdateInstallTest, adHocSignatureIsRefusedWhateverItsTeam) {
  const std::string team = "TeamIdentifier=T4N8RW2KQZ\n";
  const std::string adHoc = "Signature=adhoc\n";
  for (const std::string& report : {adHoc + team, team + adHoc}) {
    platform.childProcesses.script(describe, "Identifier=x\n" + report);
    install();
    EXPECT_THAT(platform.dialogs.take(), failed("The update was not signed by Tallowmere."));
    expectUntouched();
  }
}

TEST_F(UpdateInstallTest, lineOfVendorsTeamIsEnough) {
  for (const std::string report :
       {"TeamIdentifier=T4N8RW2KQZ", "TeamIdentifier=T4N8RW2KQZ\nTeamIdentifier=T4N8RW2KQZ\n",
        "Identifier=TeamIdentifier=AAAAAAAAAA\nTeamIdentifier=T4N8RW2KQZ\nx"}) {
    platform.childProcesses.script(describe, report);
    const int before = platform.application.terminateRequests();
    install();
    EXPECT_EQ(platform.application.terminateRequests(), before + 1) << report;
  }
}

TEST_F(UpdateInstallTest, exitStatusOfTeamQueryIsIgnored) {
  platform.childProcesses.script(describe, ToolResult{"TeamIdentifier=T4N8RW2KQZ\n", 1});
  install();
  EXPECT_EQ(platform.application.terminateRequests(), 1);
}

TEST_F(UpdateInstallTest, teamQueryLaunchErrorIsReported) {
  platform.childProcesses.failLaunches(describe, {LaunchError::Stage::launch, "No such tool"});
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("No such tool"));
  expectUntouched();
}

} // namespace
} // namespace driftmark::test
