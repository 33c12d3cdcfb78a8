// When updates are checked for, and what each outcome shows.

#include "UpdateTest.h"

#include <chrono>
#include <functional>
#include <utility>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class UpdateCheckerTest : public UpdateTest {
protected:
  /// Runs `inside` while the next alert is open.
  void onNextAlert(std::function<void()> inside) {
    platform.dialogs.onShow([this, inside = std::move(inside)](const Alert&) {
      platform.dialogs.onShow(nullptr);
      platform.mainQueue.runModal(inside);
    });
  }

  Lines takeMessages() {
    Lines messages;
    for (const Alert& alert : platform.dialogs.take())
      messages.push_back(alert.messageText);
    return messages;
  }
};

TEST_F(UpdateCheckerTest, manifestIsAtVendorsHost) {
  EXPECT_THAT(checker->manifestURL(), testing::StartsWith("https://"));
  EXPECT_THAT(checker->manifestURL(), testing::EndsWith("/driftmark/appcast.json"));
}

TEST_F(UpdateCheckerTest, settingChangesManifestUrl) {
  platform.userDefaults.setString("UpdateManifestURL", "https://other.example/beta.json");
  EXPECT_EQ(checker->manifestURL(), "https://other.example/beta.json");
}

TEST_F(UpdateCheckerTest, settingThatIsNotTextIsIgnored) {
  platform.userDefaults.setBoolean("UpdateManifestURL", true);
  EXPECT_THAT(checker->manifestURL(), testing::EndsWith("/driftmark/appcast.json"));
}

using UpdateCheckerDeathTest = UpdateTest;

TEST_F(UpdateCheckerDeathTest, settingThatIsNotUrlEndsProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  platform.userDefaults.setString("UpdateManifestURL", "not an address");
  EXPECT_DEATH(checker->check(true), "the setting UpdateManifestURL is not an address");
}

TEST_F(UpdateCheckerTest, versionIsThatOfBundle) {
  EXPECT_EQ(checker->currentVersion(), "1.0");
}

TEST_F(UpdateCheckerTest, versionOutsideBundleIsZero) {
  platform.bundle = TestBundle();
  EXPECT_EQ(checker->currentVersion(), "0");
}

TEST_F(UpdateCheckerTest, firstCheckRunsAfterThirtySeconds) {
  checker->start();
  platform.mainQueue.advance(29.999s);
  EXPECT_EQ(platform.httpClient.fetches().size(), 0U);
  platform.mainQueue.advance(0.001s);
  EXPECT_EQ(platform.httpClient.fetches().size(), 1U);
}

TEST_F(UpdateCheckerTest, furtherChecksRunDaily) {
  checker->start();
  EXPECT_THAT(platform.mainQueue.timers(),
              ElementsAre(TestMainQueue::TimerSettings{Seconds(86400), Seconds(3600)}));
  for (std::size_t checks = 1; checks <= 4; ++checks) {
    platform.mainQueue.advance(checks == 1 ? Seconds(30) : Seconds(86400));
    ASSERT_EQ(platform.httpClient.fetches().size(), checks);
    reply(manifest("1.0"));
  }
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
}

TEST_F(UpdateCheckerTest, secondStartReplacesTimer) {
  checker->start();
  checker->start();
  EXPECT_EQ(platform.mainQueue.timers().size(), 1U);
}

TEST_F(UpdateCheckerTest, releasedCheckerDoesNotCheck) {
  checker->start();
  checker.reset();
  platform.mainQueue.advance(Seconds(200000));
  EXPECT_THAT(platform.httpClient.fetches(), IsEmpty());
}

TEST_F(UpdateCheckerTest, requestBypassesCacheAndIsLimitedInTime) {
  checker->check(false);
  ASSERT_EQ(platform.httpClient.fetches().size(), 1U);
  const auto& [request, maxBodySize] = platform.httpClient.fetches()[0];
  EXPECT_EQ(request.url, checker->manifestURL());
  EXPECT_EQ(request.cachePolicy, HttpClient::CachePolicy::reloadIgnoringLocalCacheData);
  EXPECT_EQ(request.timeoutInterval, Seconds(60));
  EXPECT_EQ(request.maxDuration, Seconds(300));
  EXPECT_EQ(maxBodySize, 1024U * 1024U);
}

TEST_F(UpdateCheckerTest, checkDuringPendingReplyIsIgnored) {
  checker->check(true);
  checker->check(true);
  checker->check(false);
  EXPECT_EQ(platform.httpClient.fetches().size(), 1U);
  platform.httpClient.reply(manifest("1.0"));
  checker->check(true); // the reply has not reached the main thread yet
  EXPECT_EQ(platform.httpClient.fetches().size(), 1U);
  platform.settle();
  EXPECT_EQ(platform.dialogs.take().size(), 1U);
  checker->check(true);
  EXPECT_EQ(platform.httpClient.fetches().size(), 2U);
}

TEST_F(UpdateCheckerTest, checkMayBeginWhileAlertIsOpen) {
  platform.dialogs.onShow([&](const Alert&) { checker->check(true); });
  checker->check(true);
  reply(manifest("1.0"));
  EXPECT_EQ(platform.httpClient.fetches().size(), 2U);
}

TEST_F(UpdateCheckerTest, automaticChecksShowNothingWhileAlertIsOpen) {
  checker->start();
  onNextAlert([&] {
    for (int day = 0; day < 3; ++day) {
      platform.mainQueue.advance(UpdateChecker::checkInterval);
      reply(manifest("1.6"));
    }
  });
  platform.mainQueue.advance(UpdateChecker::firstCheckDelay);
  reply(manifest("1.5"));
  EXPECT_EQ(platform.httpClient.fetches().size(), 4U);
  EXPECT_THAT(takeLog(), Contains("Driftmark: update 1.6 available (running 1.0)").Times(3));
  EXPECT_THAT(takeMessages(), ElementsAre("Driftmark 1.5 is available"));
  EXPECT_EQ(platform.application.activations(), 1);

  platform.mainQueue.advance(UpdateChecker::checkInterval);
  reply(manifest("1.6"));
  EXPECT_THAT(takeMessages(), ElementsAre("Driftmark 1.6 is available"));
}

TEST_F(UpdateCheckerTest, automaticCheckShowsNothingWhileFailureIsShown) {
  platform.dialogs.answer(0);
  checker->check(true);
  reply(manifest("1.5"));
  onNextAlert([&] {
    checker->check(false);
    reply(manifest("1.6"));
  });
  platform.httpClient.failDownload({"The network is unreachable."});
  platform.settle();
  EXPECT_THAT(takeMessages(), ElementsAre("Driftmark 1.5 is available", "Update failed"));
}

TEST_F(UpdateCheckerTest, automaticCheckShowsNothingWhileInnerAlertIsClosedAndOuterOpen) {
  onNextAlert([&] {
    checker->check(true);
    reply(manifest("1.6"));
    checker->check(false);
    reply(manifest("1.7"));
  });
  checker->check(false);
  reply(manifest("1.5"));
  EXPECT_THAT(takeMessages(),
              ElementsAre("Driftmark 1.5 is available", "Driftmark 1.6 is available"));
}

TEST_F(UpdateCheckerTest, automaticCheckWithoutUpdateOnlyLogs) {
  checker->check(false);
  reply(manifest("1.0"));
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: up to date (1.0)"));
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
  EXPECT_EQ(platform.application.activations(), 0);
}

TEST_F(UpdateCheckerTest, requestedCheckReportsUpToDate) {
  checker->check(true);
  reply(manifest("0.9"));
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: up to date (1.0)"));
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(Alert{"Driftmark is up to date", "Version 1.0 is the latest.", {}}));
  EXPECT_EQ(platform.application.activations(), 1);
}

TEST_F(UpdateCheckerTest, automaticCheckThatFailsOnlyLogs) {
  checker->check(false);
  platform.httpClient.fail({"The network is unreachable."});
  platform.settle();
  EXPECT_THAT(takeLog(),
              ElementsAre("Driftmark: update check failed: The network is unreachable."));
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
  EXPECT_EQ(platform.application.activations(), 0);
}

TEST_F(UpdateCheckerTest, requestedCheckShowsTransportError) {
  checker->check(true);
  platform.httpClient.fail({"The network is unreachable."});
  platform.settle();
  EXPECT_THAT(takeLog(),
              ElementsAre("Driftmark: update check failed: The network is unreachable."));
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(Alert{"Could not check for updates", "The network is unreachable.", {}}));
  EXPECT_EQ(platform.application.activations(), 1);
}

TEST_F(UpdateCheckerTest, errorPageIsUnreadableManifest) {
  checker->check(true);
  reply("<html><body><h1>404 Not Found</h1></body></html>");
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: update check failed: unreadable manifest"));
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(Alert{
                  "Could not check for updates", "The update information was unreadable.", {}}));
}

TEST_F(UpdateCheckerTest, newerVersionIsOfferedByEveryCheck) {
  for (const bool interactive : {false, true}) {
    checker->check(interactive);
    reply(manifest("1.5"));
    EXPECT_THAT(takeLog(), ElementsAre("Driftmark: update 1.5 available (running 1.0)"));
    EXPECT_THAT(platform.dialogs.take(), ElementsAre(Alert{"Driftmark 1.5 is available",
                                                           "You have 1.0.",
                                                           {"Install and Relaunch", "Later"}}));
  }
  EXPECT_EQ(platform.application.activations(), 2);
}

TEST_F(UpdateCheckerTest, notesFollowBlankLine) {
  checker->check(false);
  reply(manifest("1.5", R"(, "notes": "Fewer wake-ups.\nA new icon.")"));
  EXPECT_EQ(platform.dialogs.take().at(0).informativeText,
            "You have 1.0.\n\nFewer wake-ups.\nA new icon.");
}

TEST_F(UpdateCheckerTest, emptyNotesAddNothing) {
  checker->check(false);
  reply(manifest("1.5", R"(, "notes": "")"));
  EXPECT_EQ(platform.dialogs.take().at(0).informativeText, "You have 1.0.");
}

TEST_F(UpdateCheckerTest, longVersionAndNotesAreCut) {
  checker->check(false);
  reply(manifest("2." + std::string(100'000, '1'),
                 R"(, "notes": ")" + std::string(100'000, 'x') + "\""));
  const Alert offer = platform.dialogs.take().at(0);
  EXPECT_EQ(offer.messageText, "Driftmark 2." + std::string(62, '1') + " is available");
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: update 2." + std::string(62, '1') +
                                     " available (running 1.0)"));
  EXPECT_EQ(offer.informativeText, "You have 1.0.\n\n" + std::string(20'000, 'x'));
}

TEST_F(UpdateCheckerTest, manyMarksOnOneLetterAreCut) {
  std::string tower = "2.0";
  for (int mark = 0; mark < 100'000; ++mark)
    tower += "\u0301";
  checker->check(false);
  reply(manifest(tower, R"(, "notes": ")" + tower + "\""));
  const Alert offer = platform.dialogs.take().at(0);
  EXPECT_LT(offer.messageText.size(), 5'000U);
  EXPECT_LT(offer.informativeText.size(), 1'000'000U);
}

TEST_F(UpdateCheckerTest, controlsInVersionAndNotesAreNeutralized) {
  checker->check(false);
  reply(manifest(R"(2.5\u202e\n\u001b[1m)", R"(, "notes": "Fewer\u2066 wake-ups.\r\n\u0007")"));
  const Alert offer = platform.dialogs.take().at(0);
  EXPECT_EQ(offer.messageText, "Driftmark 2.5 \ufffd[1m is available");
  EXPECT_EQ(offer.informativeText, "You have 1.0.\n\nFewer wake-ups.\n\ufffd");
}

TEST_F(UpdateCheckerTest, notesOfDirectionControlsAddNothing) {
  checker->check(false);
  reply(manifest("1.5", R"(, "notes": "\u202e\u2069")"));
  EXPECT_EQ(platform.dialogs.take().at(0).informativeText, "You have 1.0.");
}

TEST_F(UpdateCheckerTest, errorsAreCutAndNeutralized) {
  const std::string error = "Host \u202e\u202c" + std::string(100'000, 'x') + " not found";
  const std::string shown = "Host " + std::string(995, 'x');
  checker->check(true);
  platform.httpClient.fail({error});
  platform.settle();
  EXPECT_EQ(platform.dialogs.take().at(0).informativeText, shown);
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: update check failed: " + shown));

  platform.dialogs.answer(0);
  checker->check(true);
  reply(manifest("1.5"));
  platform.httpClient.failDownload({error});
  platform.settle();
  EXPECT_EQ(platform.dialogs.take().at(1).informativeText, shown);
}

TEST_F(UpdateCheckerTest, declinedVersionIsOfferedAgain) {
  checker->check(false);
  reply(manifest("1.5"));
  EXPECT_THAT(platform.httpClient.downloads(), IsEmpty());
  EXPECT_EQ(platform.dialogs.take().size(), 1U);
  checker->check(false);
  reply(manifest("1.5"));
  EXPECT_EQ(platform.dialogs.take().size(), 1U);
}

TEST_F(UpdateCheckerTest, agreementStartsDownload) {
  platform.dialogs.answer(0);
  checker->check(false);
  reply(manifest("1.5"));
  EXPECT_THAT(platform.httpClient.downloads(), ElementsAre(archiveURL));
}

TEST_F(UpdateCheckerTest, replyAfterReleaseIsDropped) {
  checker->check(true);
  checker.reset();
  reply(manifest("1.5"));
  EXPECT_THAT(takeLog(), IsEmpty());
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
}

} // namespace
} // namespace driftmark::test
