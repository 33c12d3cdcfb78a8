// Which lines a scenario consists of, and in which order they may come.
#include "scenario/ActionReader.h"
#include "scenario/Scenario.h"
#include "scenario/ScenarioLine.h"
#include "scenario/UserStep.h"

#include <algorithm>
#include <string_view>

namespace icloud {
namespace {

std::string readStallAfter(ScenarioLine& line) {
  const auto milliseconds = line.duration("a duration").count();
  if (milliseconds == 0)
    line.fail("a stall takes longer than 0s");
  return std::to_string(static_cast<double>(milliseconds) / 1000);
}

void readBounds(ScenarioLine& line, Expectation& into) {
  into.least = into.most = line.count("a number of lines");
  if (line.accept("to"))
    into.most = line.count("a number of lines");
  else if (line.accept("or-more"))
    into.most = Expectation::unlimited;
  if (into.most < into.least)
    line.fail("the second number is smaller");
}

template <typename Kind> bool does(const Step& step) {
  return std::holds_alternative<Kind>(step.action);
}

bool belongsToInitialState(const Step& step) {
  return does<MakeFolder>(step) || does<MakeFiles>(step) || does<AddJobs>(step) ||
         does<SetState>(step) || does<SetQuota>(step) || does<Lock>(step);
}

bool endsScenario(const Step& step) {
  return does<EndScenario>(step) || does<RepeatSteps>(step);
}

/// Collects the parts of a scenario line by line.
class ScenarioParser {
public:
  explicit ScenarioParser(const std::string& file);

  void readLine(std::string_view text);

  /// The scenario, after the last line.
  Scenario finish();

private:
  void readDirective(ScenarioLine& line);
  void readExpectation(ScenarioLine& line, Expectation::Kind kind);
  void readUserStep(ScenarioLine& line);
  void readStep(ScenarioLine& line);
  void readTransfers(ScenarioLine& line, Milliseconds at, Direction direction);
  void append(Step step, const ScenarioLine& line);
  void checkTime(Milliseconds at, const ScenarioLine& line);

  Scenario scenario_;
  unsigned lineNumber_ = 0;
  Milliseconds lastTime_{}; ///< that a line named
  bool hasEnd_ = false;
  ActionReader actions_;
};

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
  if (!scenario_.user.empty() &&
      std::holds_alternative<RepeatUserSteps>(scenario_.user.back().action))
    line.fail("no step of the user may follow \"repeats\"");
  UserStep step{{}, line.number(), line.remainder()};
  step.action = readUserAction(line);
  scenario_.user.push_back(std::move(step));
}

void ScenarioParser::readStep(ScenarioLine& line) {
  Step step;
  step.line = line.number();
  if (line.accept("at"))
    step.at = line.duration("a time");
  if (step.at && line.accept("uploads"))
    return readTransfers(line, *step.at, Direction::upload);
  if (step.at && line.accept("downloads"))
    return readTransfers(line, *step.at, Direction::download);
  step.text = line.remainder();
  step.action = actions_.read(line);
  append(std::move(step), line);
}

/// The transfers start one after the other within one interval, so that their reports are spread
/// evenly.
void ScenarioParser::readTransfers(ScenarioLine& line, Milliseconds at, Direction direction) {
  const std::vector<Transfer> transfers = actions_.readTransfers(line, direction);
  const char* const verb = direction == Direction::upload ? "upload" : "download";
  checkTime(at, line);
  for (std::size_t index = 0; index < transfers.size(); ++index) {
    const Transfer& transfer = transfers[index];
    const auto offset = transfer.every * static_cast<Milliseconds::rep>(index) /
                        static_cast<Milliseconds::rep>(transfers.size());
    scenario_.steps.push_back(
        {at + offset, transfer, line.number(), verb + (" \"" + transfer.path + '"')});
  }
}

void ScenarioParser::checkTime(Milliseconds at, const ScenarioLine& line) {
  if (at < lastTime_)
    line.fail("the times must not decrease");
  if (hasEnd_)
    line.fail("no step may follow the end");
  lastTime_ = at;
}

void ScenarioParser::append(Step step, const ScenarioLine& line) {
  auto& steps = scenario_.steps;
  if (!step.at) {
    if (!belongsToInitialState(step))
      line.fail("this needs a time, as in: at 2s " + step.text);
    if (!steps.empty())
      line.fail("the initial state comes before the first line with a time");
    scenario_.initialState.push_back(std::move(step));
    return;
  }
  checkTime(*step.at, line);
  hasEnd_ = endsScenario(step);
  steps.push_back(std::move(step));
}

Scenario ScenarioParser::finish() {
  std::stable_sort(scenario_.steps.begin(), scenario_.steps.end(),
                   [](const Step& left, const Step& right) { return left.at < right.at; });
  if (!hasEnd_ || !endsScenario(scenario_.steps.back()))
    throw ScenarioError(scenario_.file, lineNumber_, "the scenario has no end, as in: at 60s end");
  return std::move(scenario_);
}

} // namespace

Milliseconds Scenario::length() const {
  return steps.empty() ? Milliseconds{} : steps.back().at.value_or(Milliseconds{});
}

bool Scenario::repeats() const {
  return !steps.empty() && does<RepeatSteps>(steps.back());
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
