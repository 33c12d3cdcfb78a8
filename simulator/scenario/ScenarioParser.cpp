#include "scenario/ScenarioParser.h"

#include "scenario/ScenarioError.h"

#include <algorithm>

namespace icloud {
namespace {

std::string readStallAfter(ScenarioLine& line) {
  const auto milliseconds = line.duration("a duration").count();
  if (milliseconds == 0)
    line.fail("a stall takes longer than nothing");
  return std::to_string(static_cast<double>(milliseconds) / 1000);
}

void readBounds(ScenarioLine& line, Expectation& into) {
  into.least = into.most = line.count("a number of lines");
  if (line.accept("to"))
    into.most = line.count("a number of lines");
  else if (line.accept("or-more"))
    into.most = Expectation::unlimited;
  if (into.most < into.least)
    line.fail("the greater number comes last");
}

template <typename Kind> bool does(const Step& step) {
  return std::holds_alternative<Kind>(step.action);
}

bool canBeOnStage(const Step& step) {
  return does<MakeFolder>(step) || does<MakeFiles>(step) || does<AddJobs>(step) ||
         does<SetState>(step) || does<SetQuota>(step) || does<Lock>(step);
}

} // namespace

ScenarioParser::ScenarioParser(const std::string& file)
    : actions_(std::filesystem::path(file).parent_path()) {
  scenario_.file = file;
}

void ScenarioParser::readLine(std::string_view text) {
  ScenarioLine line(scenario_.file, ++lineNumber_, text);
  if (line.atEnd())
    return;
  readDirective(line);
  line.requireEnd();
}

void ScenarioParser::readDirective(ScenarioLine& line) {
  if (line.accept("title"))
    scenario_.title = line.quoted("a title");
  else if (line.accept("stall-after"))
    scenario_.stallAfter = readStallAfter(line);
  else if (line.accept("expect"))
    readExpectation(line, Expectation::Kind::count);
  else if (line.accept("in-order"))
    readExpectation(line, Expectation::Kind::inOrder);
  else if (line.accept("never"))
    readExpectation(line, Expectation::Kind::never);
  else if (line.accept("allow"))
    readExpectation(line, Expectation::Kind::allow);
  else if (line.accept("user"))
    readUserStep(line);
  else
    readStep(line);
}

void ScenarioParser::readExpectation(ScenarioLine& line, Expectation::Kind kind) {
  Expectation expectation;
  expectation.kind = kind;
  expectation.line = line.number();
  if (kind == Expectation::Kind::count)
    readBounds(line, expectation);
  else if (kind == Expectation::Kind::inOrder)
    expectation.least = expectation.most = 1;
  else if (kind == Expectation::Kind::never)
    expectation.most = 0;
  expectation.pattern = line.quoted("a pattern");
  scenario_.expectations.push_back(std::move(expectation));
}

void ScenarioParser::readUserStep(ScenarioLine& line) {
  UserStep step{{}, line.number(), line.rest()};
  step.action = readUserAction(line);
  scenario_.user.push_back(std::move(step));
}

void ScenarioParser::readStep(ScenarioLine& line) {
  Step step;
  step.line = line.number();
  if (line.accept("at"))
    step.at = line.duration("a time");
  step.text = line.rest();
  step.action = actions_.read(line);
  place(std::move(step), line);
}

void ScenarioParser::place(Step step, const ScenarioLine& line) {
  auto& story = scenario_.story;
  if (!step.at) {
    if (!canBeOnStage(step))
      line.fail("this needs a time, as in: at 2s " + step.text);
    if (!story.empty())
      line.fail("what is there from the start comes before the first line with a time");
    scenario_.stage.push_back(std::move(step));
    return;
  }
  if (!story.empty() && step.at < story.back().at)
    line.fail("the times go forwards");
  if (!story.empty() && does<EndStory>(story.back()))
    line.fail("nothing comes after the end");
  story.push_back(std::move(step));
}

Scenario ScenarioParser::finish() {
  if (scenario_.story.empty() || !does<EndStory>(scenario_.story.back()))
    throw ScenarioError(scenario_.file, lineNumber_, "the story has no end, as in: at 60s end");
  return std::move(scenario_);
}

Milliseconds Scenario::length() const {
  return story.empty() ? Milliseconds{} : story.back().at.value_or(Milliseconds{});
}

Scenario parseScenario(const std::string& text, const std::string& name) {
  ScenarioParser parser(name);
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    parser.readLine(std::string_view(text).substr(begin, end - begin));
    begin = end + 1;
  }
  return parser.finish();
}

Scenario readScenario(const std::filesystem::path& file) {
  return parseScenario(contentsOf(file), file.string());
}

} // namespace icloud
