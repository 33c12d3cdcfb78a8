#include "scenario/Expectation.h"

#include "demo/Summary.h"
#include "scenario/Glob.h"
#include "scenario/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace icloud::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

CheckedLog check(const std::string& expectations, const std::vector<std::string>& log) {
  const Scenario scenario = parseScenario("at 1s end\n" + expectations, "a.scenario");
  return checkLog(log, scenario.expectations, {{"drive", "/d*"}});
}

TEST(Glob, wholeTextHasToMatch) {
  EXPECT_TRUE(matchesGlob("a*c", "abbbc"));
  EXPECT_TRUE(matchesGlob("a*c", "ac"));
  EXPECT_TRUE(matchesGlob("*", ""));
  EXPECT_TRUE(matchesGlob("*a*b*", "xxaxxbxx"));
  EXPECT_TRUE(matchesGlob("a?c", "abc"));
  EXPECT_TRUE(matchesGlob("a\\*c", "a*c"));
  EXPECT_FALSE(matchesGlob("a\\*c", "abc"));
  EXPECT_FALSE(matchesGlob("a*c", "abcd"));
  EXPECT_FALSE(matchesGlob("?", ""));
  EXPECT_FALSE(matchesGlob("", "a"));
}

TEST(Expectation, completeLogFulfilsEveryExpectation) {
  const CheckedLog checked = check("expect 2 \"up *\"\n"
                                   "in-order \"first\"\n"
                                   "in-order \"second\"\n"
                                   "allow \"noise\"\n"
                                   "never \"bad\"\n",
                                   {"noise", "first", "up a", "second", "up b", "noise"});
  EXPECT_TRUE(checked.fulfilled());
  EXPECT_THAT(checked.unexpected, IsEmpty());
}

TEST(Expectation, tooFewAndTooManyLinesAreDeviations) {
  EXPECT_FALSE(check("expect 2 \"a\"\n", {"a"}).fulfilled());
  EXPECT_FALSE(check("expect 2 \"a\"\n", {"a", "a", "a"}).fulfilled());
  EXPECT_TRUE(check("expect 2 or-more \"a\"\n", {"a", "a", "a"}).fulfilled());
  EXPECT_TRUE(check("expect 2 to 3 \"a\"\n", {"a", "a", "a"}).fulfilled());
  EXPECT_FALSE(check("expect 1 to 2 \"a\"\n", {"a", "a", "a"}).fulfilled());
}

TEST(Expectation, uncoveredLineIsADeviation) {
  const CheckedLog checked = check("expect 1 \"a\"\n", {"a", "what is this"});
  EXPECT_FALSE(checked.fulfilled());
  EXPECT_THAT(checked.unexpected, ElementsAre("what is this"));
}

TEST(Expectation, forbiddenLineIsADeviationEvenWhenAllowed) {
  EXPECT_FALSE(check("allow \"*\"\nnever \"bad*\"\n", {"bad thing"}).fulfilled());
}

TEST(Expectation, linesInWrongOrderAreADeviation) {
  EXPECT_FALSE(check("in-order \"a\"\nin-order \"b\"\n", {"b", "a"}).fulfilled());
}

TEST(Expectation, repeatedOrderedLineIsUnexpected) {
  EXPECT_THAT(check("in-order \"a\"\nin-order \"b\"\n", {"a", "b", "a"}).unexpected,
              ElementsAre("a"));
}

TEST(Expectation, missingOrderedLineFailsOnlyItself) {
  const CheckedLog checked =
      check("in-order \"a\"\nin-order \"missing\"\nin-order \"b\"\n", {"a", "b"});
  EXPECT_TRUE(checked.results[0].fulfilled);
  EXPECT_FALSE(checked.results[1].fulfilled);
  EXPECT_TRUE(checked.results[2].fulfilled);
  EXPECT_THAT(checked.unexpected, IsEmpty());
}

TEST(Expectation, namesAreReplacedWithoutWildcards) {
  EXPECT_TRUE(check("expect 1 \"in {drive}/A\"\n", {"in /d*/A"}).fulfilled());
  EXPECT_FALSE(check("expect 1 \"in {drive}/A\"\n", {"in /dx/A"}).fulfilled());
}

TEST(Summary, everyDeviationIsListed) {
  const Summary summary(check("expect 2 \"a\"\nin-order \"b\"\n", {"a", "c"}), {"1 s", "2 s"},
                        {{"it ended well", {"it ended with status 3"}}});
  EXPECT_EQ(summary.deviations().size(), 4u);
  const std::string text = summary.text();
  EXPECT_THAT(text, HasSubstr("Deviations from the scenario: 4\n"));
  EXPECT_THAT(text, HasSubstr("  - line 2 of the scenario: expected 2, seen 1: a\n"));
  EXPECT_THAT(text,
              HasSubstr("  - line 3 of the scenario: not seen at its place in the order: b\n"));
  EXPECT_THAT(text, HasSubstr("  - unexpected log line: c\n"));
  EXPECT_THAT(text, HasSubstr("  - it ended with status 3\n"));
}

TEST(Summary, runWithoutDeviationSaysSo) {
  const Summary summary(check("expect 1 \"a\"\n", {"a"}), {"1 s"}, {});
  EXPECT_THAT(summary.deviations(), IsEmpty());
  EXPECT_THAT(summary.text(), HasSubstr("  ok    1          1     a\n"));
  EXPECT_THAT(summary.text(), HasSubstr("All 2 hold: no deviation from the scenario.\n"));
}

} // namespace
} // namespace icloud::test
