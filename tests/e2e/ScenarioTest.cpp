#include "scenario/Scenario.h"

#include "scenario/Timeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace icloud::test {
namespace {

using testing::HasSubstr;

std::string problemOf(const std::string& text) {
  try {
    parseScenario(text, "a.scenario");
  } catch (const ScenarioError& error) {
    return error.what();
  }
  return "none";
}

TEST(Scenario, initialStateStepsAndExpectationsAreRead) {
  const Scenario scenario = parseScenario("title \"A \\\"title\\\"\" # with a comment\n"
                                          "stall-after 2.5s\n"
                                          "\n"
                                          "files 12 \"a/{n}.txt\" 1.5KB remote\n"
                                          "at 250ms download \"a/07.txt\" over 2s # here too\n"
                                          "at 1m end\n"
                                          "expect 2 or-more \"line *\"\n"
                                          "expect 0 to 3 \"another # one\"\n"
                                          "never \"bad\"\n",
                                          "a.scenario");
  EXPECT_EQ(scenario.title, "A \"title\"");
  EXPECT_EQ(std::stod(scenario.stallAfter.value()), 2.5);
  ASSERT_EQ(scenario.initialState.size(), 1u);
  const auto& files = std::get<MakeFiles>(scenario.initialState[0].action);
  EXPECT_EQ(files.bytes, 1500u);
  EXPECT_TRUE(files.remote);
  EXPECT_EQ(files.paths.at(7), "a/07.txt");
  ASSERT_EQ(scenario.steps.size(), 2u);
  EXPECT_EQ(scenario.steps[0].at, Milliseconds(250));
  EXPECT_EQ(scenario.steps[0].text, "download \"a/07.txt\" over 2s");
  EXPECT_EQ(scenario.length(), Milliseconds(60'000));
  ASSERT_EQ(scenario.expectations.size(), 3u);
  EXPECT_EQ(scenario.expectations[0].most, Expectation::unlimited);
  EXPECT_EQ(scenario.expectations[1].pattern, "another # one");
  EXPECT_EQ(scenario.expectations[2].line, 9u);
}

TEST(Scenario, userStepsAreRead) {
  const Scenario scenario = parseScenario("user awaits \"a line*\" # with a comment\n"
                                          "at 1s end\n"
                                          "user finds \"Launch *\" checked\n"
                                          "user pauses 1.5s\n"
                                          "user awaits exit\n"
                                          "user opens menu\n"
                                          "user opens \"a/file\"\n"
                                          "user picks \"a/folder\"\n"
                                          "user measures \"a\" at-least 4KB\n"
                                          "user measures \"b\" at-most 0\n",
                                          "a.scenario");
  ASSERT_EQ(scenario.user.size(), 9u);
  EXPECT_EQ(std::get<AwaitLine>(scenario.user[0].action).pattern, "a line*");
  EXPECT_EQ(scenario.user[0].text, "awaits \"a line*\"");
  EXPECT_EQ(std::get<FindEntry>(scenario.user[1].action).checked, true);
  EXPECT_EQ(scenario.user[1].line, 3u);
  EXPECT_EQ(std::get<Pause>(scenario.user[2].action).duration, Milliseconds(1500));
  EXPECT_TRUE(std::holds_alternative<AwaitExit>(scenario.user[3].action));
  EXPECT_TRUE(std::holds_alternative<OpenMenu>(scenario.user[4].action));
  EXPECT_EQ(std::get<OpenFile>(scenario.user[5].action).path, "a/file");
  EXPECT_EQ(std::get<PickFolder>(scenario.user[6].action).path, "a/folder");
  EXPECT_EQ(std::get<MeasureDisk>(scenario.user[7].action).least, 4000u);
  EXPECT_EQ(std::get<MeasureDisk>(scenario.user[8].action).most, 0u);
}

struct Mistake {
  const char* line;
  const char* message;
};

const std::vector<Mistake> mistakes{
    {"dance", R"(unknown verb "dance")"},
    {"at", "expected a time at the end"},
    {"at noon end", "not a time such as 1.5s"},
    {"at 99h end", "not a time such as"},
    {"at 2m2 end", "not a time such as"},
    {"title Untitled", "expected a title in quotes at Untitled"},
    {R"(title "open)", "no closing quote"},
    {R"(title "\q")", "a backslash is followed by"},
    {R"(title "\xg0")", "two hexadecimal digits"},
    {R"(title "a" "b")", R"(nothing more was expected here: "b")"},
    {R"(evict "here")", R"(this needs a time, as in: at 2s evict "here")"},
    {R"(at 1s evict "elsewhere")", "no line before this one makes the file"},
    {R"(file "here" 2KB)", "a line before this one makes the file"},
    {R"(file "new")", "expected a size at the end"},
    {R"(file "new" large)", "not a size such as 120KB"},
    {R"(file "new" 1e3B)", "not a size such as"},
    {R"(file "new" 1KB far)", "nothing more was expected here: far"},
    {R"(file "a/../b" 1KB)", R"(has no empty, "." or ".." part)"},
    {R"(file "/a" 1KB)", "a path is relative"},
    {R"(file "" 1KB)", "a path is relative"},
    {R"(file "a\nb" 1KB)", "no control characters"},
    {R"(file "{n}" 1KB)", R"({n} is for "files")"},
    {R"(files 3 "new" 1KB)", "the path of many files holds {n}"},
    {R"(files 0 "{n}" 1KB)", "from 1 to"},
    {R"(files 1.5 "{n}" 1KB)", "without a fraction"},
    {R"(at 1s upload "here")", R"(expected "over" at the end)"},
    {R"(at 1s upload "here" 2KB over 1s)", "is there already"},
    {R"(at 1s upload "new" over 1s)", R"(the new file "new" needs a size)"},
    {R"(at 1s upload "here" over 0s)", "longer than 0s"},
    {R"(at 1s upload "here" over 1h)", "not a duration such as"},
    {R"(at 1s upload "here" over 2m every 1ms)", "at most"},
    {R"(at 1s upload "here" over 1s quickly)", "unknown option of a transfer: quickly"},
    {R"(at 1s upload "here" over 1s cancelled at 5%)", "only a download"},
    {R"(at 1s download "here" over 1s stalled at 120% for 1s)", "more than 100%"},
    {R"(at 1s download "here" over 1s stalled at 5 for 1s)", "not a percentage: 5"},
    {R"(at 1s download "here" over 1s stalled at 60% for 1s cancelled at 50%)",
     "stalls before it ends"},
    {R"(at 1s error "here" "")", "a state is not empty"},
    {R"(at 1s state "here")", "expected a state at the end"},
    {R"(at 1s jobs 2 sideways in "A")", R"(expected "downloading" or "uploading")"},
    {"at 1s kill bill", R"(expected "monitors")"},
    {"at 1s await snow", R"(expected "monitors" at snow)"},
    {"at 1s print nothing", R"(expected "items")"},
    {R"(at 1s replay items "no such capture")", "cannot read no such capture"},
    {R"(expect "a")", "expected a number of lines without quotes"},
    {R"(expect 3 to 2 "a")", "the second number is smaller"},
    {"stall-after 0s", "longer than 0s"},
    {"user", "expected what the user does at the end"},
    {"user dances", R"(unknown verb of the user "dances")"},
    {"user opens", R"(expected the path of a file or "menu" at the end)"},
    {"user closes", R"(expected "menu" at the end)"},
    {"user picks freely", "expected a path in quotes at freely"},
    {R"(user measures "a" at-least)", "expected a size at the end"},
    {R"(user measures "a" about 4KB)", "nothing more was expected here: about 4KB"},
    {"user awaits spring", R"(expected a pattern or "exit" in quotes at spring)"},
    {"user pauses long", "not a duration such as"},
    {R"(user finds "a" unticked)", "nothing more was expected here: unticked"},
    {"user reads minds", R"(expected "menu" at minds)"},
    {R"(user shot "a/b")", "part of a file's name"},
    {"user repeats menu", "nothing more was expected here: menu"}};

TEST(Scenario, mistakeIsReportedWithFileAndLine) {
  for (const Mistake& mistake : mistakes) {
    SCOPED_TRACE(mistake.line);
    const std::string problem =
        problemOf("file \"here\" 1KB\n" + std::string(mistake.line) + "\nat 9s end\n");
    EXPECT_THAT(problem, testing::StartsWith("a.scenario:2: "));
    EXPECT_THAT(problem, HasSubstr(mistake.message));
  }
}

TEST(Scenario, stepsOutOfOrderAreRefused) {
  EXPECT_EQ(problemOf("at 2s no-jobs\nat 1s end\n"), "a.scenario:2: the times must not decrease");
}

TEST(Scenario, initialStateAfterFirstStepIsRefused) {
  EXPECT_THAT(problemOf("at 2s no-jobs\nquota 3\nat 3s end\n"),
              HasSubstr("a.scenario:2: the initial state"));
}

TEST(Scenario, stepAfterEndIsRefused) {
  EXPECT_THAT(problemOf("at 2s end\nat 3s no-jobs\n"),
              HasSubstr("a.scenario:2: no step may follow"));
}

TEST(Scenario, repetitionIsAnEnd) {
  EXPECT_EQ(problemOf("at 2s repeat\n"), "none");
  EXPECT_THAT(problemOf("at 2s repeat\nat 3s no-jobs\n"),
              HasSubstr("a.scenario:2: no step may follow"));
  EXPECT_THAT(problemOf("user pauses 1s\nuser repeats\nuser opens menu\nat 2s end\n"),
              HasSubstr("a.scenario:3: no step of the user may follow"));
}

TEST(Scenario, scenarioWithoutEndIsRefused) {
  EXPECT_THAT(problemOf("quota 3\nat 3s no-jobs\n"),
              HasSubstr("a.scenario:2: the scenario has no end"));
  EXPECT_THAT(problemOf(""), HasSubstr("a.scenario:0: the scenario has no end"));
}

std::vector<long> timesOf(const std::string& transfer) {
  const Scenario scenario = parseScenario("at 1s " + transfer + "\nat 60s end\n", "a.scenario");
  std::vector<long> times;
  for (const TimelineEvent& event : timelineOf(scenario))
    times.push_back(event.at.count());
  times.pop_back();
  return times;
}

TEST(Scenario, manyTransfersStartWithinOneInterval) {
  const Scenario scenario = parseScenario("files 4 \"f{n}\" 1KB\n"
                                          "at 1s uploads 4 \"f{n}\" over 10s every 2s\n"
                                          "at 2s vanish \"f1\"\n"
                                          "at 20s end\n",
                                          "many");
  ASSERT_EQ(scenario.steps.size(), 6U);
  EXPECT_EQ(scenario.steps[1].at, std::chrono::milliseconds(1500));
  EXPECT_EQ(std::get<Transfer>(scenario.steps[1].action).path, "f2");
  EXPECT_EQ(scenario.steps[2].at, std::chrono::seconds(2))
      << "the third transfer, then what a later line says";
  EXPECT_TRUE(std::holds_alternative<Transfer>(scenario.steps[2].action));
  EXPECT_TRUE(std::holds_alternative<Vanish>(scenario.steps[3].action));
}

TEST(Scenario, manyTransfersNeedTheirFiles) {
  EXPECT_THROW(
      parseScenario("files 4 \"f{n}\" 1KB\nat 1s uploads 5 \"f{n}\" over 1s\nat 9s end\n", "many"),
      ScenarioError);
}

TEST(Timeline, transferReportsAtEqualIntervals) {
  EXPECT_THAT(timesOf("upload \"a\" 1KB over 1s every 400ms"),
              testing::ElementsAre(1000, 1000, 1400, 1800, 2000));
}

TEST(Timeline, stallDelaysLaterReports) {
  EXPECT_THAT(timesOf("upload \"a\" 1KB over 1s every 400ms stalled at 50% for 10s"),
              testing::ElementsAre(1000, 1000, 1400, 1500, 1500, 11500, 11500, 11800, 12000));
}

TEST(Timeline, cancelledTransferEndsAtItsPercentage) {
  EXPECT_THAT(timesOf("download \"a\" 1KB over 1s every 400ms cancelled at 50%"),
              testing::ElementsAre(1000, 1000, 1400, 1500));
}

TEST(Timeline, globalTransferCompletesOnlyAtItsEnd) {
  const Scenario scenario =
      parseScenario("at 0s global 1000 over 1s every 300ms\nat 2s end\n", "a.scenario");
  std::vector<std::uint64_t> completed;
  for (const TimelineEvent& event : timelineOf(scenario))
    if (const auto* tick = std::get_if<GlobalTick>(&event.what))
      completed.push_back(tick->completed);
  EXPECT_THAT(completed, testing::ElementsAre(0, 300, 600, 900, 1000));
}

} // namespace
} // namespace icloud::test
