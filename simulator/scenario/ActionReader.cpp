// What the verbs of a scenario mean, and what they require.
#include "scenario/ActionReader.h"

#include "common/SystemFailure.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace icloud {
namespace {

constexpr std::uint64_t maxFiles = 10'000'000;
constexpr std::uint64_t maxJobs = 9999;
constexpr std::size_t maxNameLength = 255;
constexpr int maxReports = 100'000;

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) == 0x7f;
}

const char* pathProblem(std::string_view path) {
  if (std::any_of(path.begin(), path.end(), isControl))
    return "a path holds no control characters";
  for (std::size_t begin = 0; begin <= path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string_view name = path.substr(begin, end - begin);
    if (name.empty() || name == "." || name == "..")
      return R"(a path is relative to the drive and has no empty, "." or ".." part)";
    if (name.size() > maxNameLength)
      return "a name is longer than 255 bytes";
    begin = end + 1;
  }
  return nullptr;
}

std::string readPath(ScenarioLine& line) {
  std::string path = line.quoted("a path");
  if (const char* problem = pathProblem(path))
    line.fail(problem);
  return path;
}

Feed readFeed(ScenarioLine& line) {
  if (line.accept("global"))
    return Feed::global;
  line.require("items");
  return Feed::items;
}

void checkInterval(const ScenarioLine& line, Milliseconds duration, Milliseconds every) {
  if (duration.count() == 0 || every.count() == 0)
    line.fail("a transfer and its interval take longer than 0s");
  if (duration / every > maxReports)
    line.fail("a transfer has at most " + std::to_string(maxReports) + " steps");
}

void readStall(ScenarioLine& line, Transfer& transfer) {
  line.require("at");
  const double percent = line.percent();
  line.require("for");
  transfer.stall = Transfer::Stall{percent, line.duration("a duration")};
}

void readOutcome(ScenarioLine& line, Transfer& transfer, Transfer::Outcome outcome) {
  line.require("at");
  transfer.endsAt = line.percent();
  transfer.outcome = outcome;
  if (outcome == Transfer::Outcome::cancel && transfer.direction == Direction::upload)
    line.fail("only a download can be cancelled");
}

void readTransferOptions(ScenarioLine& line, Transfer& transfer) {
  while (!line.atEnd()) {
    if (line.accept("every")) {
      transfer.every = line.duration("a duration");
    } else if (line.accept("without")) {
      line.require("percentages");
      transfer.percentages = false;
    } else if (line.accept("stalled")) {
      readStall(line, transfer);
    } else if (line.accept("cancelled")) {
      readOutcome(line, transfer, Transfer::Outcome::cancel);
    } else if (line.accept("vanishing")) {
      readOutcome(line, transfer, Transfer::Outcome::vanish);
    } else {
      line.fail("unknown option of a transfer: " + line.remainder());
    }
  }
  checkInterval(line, transfer.duration, transfer.every);
  if (transfer.stall && transfer.stall->percent >= transfer.endsAt)
    line.fail("a transfer stalls before it ends");
}

Action readGlobal(ScenarioLine& line) {
  GlobalTransfer transfer;
  transfer.bytes = line.size();
  line.require("over");
  transfer.duration = line.duration("a duration");
  if (line.accept("every"))
    transfer.every = line.duration("a duration");
  checkInterval(line, transfer.duration, transfer.every);
  return transfer;
}

Action readJobs(ScenarioLine& line) {
  AddJobs jobs;
  jobs.count = static_cast<unsigned>(std::min(line.count("a number of jobs"), maxJobs));
  if (line.accept("downloading"))
    jobs.direction = Direction::download;
  else if (line.accept("uploading"))
    jobs.direction = Direction::upload;
  else
    line.fail(R"(expected "downloading" or "uploading")");
  line.require("in");
  jobs.folder = readPath(line);
  return jobs;
}

Action readKill(ScenarioLine& line) {
  if (line.accept("monitors"))
    return KillMonitors{};
  if (line.accept("item-monitor"))
    return KillMonitors{Feed::items};
  if (line.accept("global-monitor"))
    return KillMonitors{Feed::global};
  if (line.accept("bird"))
    return KillDaemon{};
  line.fail(R"(expected "monitors", "item-monitor", "global-monitor" or "bird")");
}

Action readAwait(ScenarioLine& line) {
  line.require("monitors");
  return AwaitMonitors{};
}

Action readPrint(ScenarioLine& line) {
  const Feed feed = readFeed(line);
  return Print{feed, line.quoted("a text")};
}

} // namespace

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream || std::filesystem::is_directory(file))
    throwSystemFailure("cannot read " + file.string(), stream ? EISDIR : errno);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Action ActionReader::read(ScenarioLine& line) {
  const std::string verb = line.word("a verb");
  if (verb == "file" || verb == "files")
    return readFiles(line, verb == "files");
  if (verb == "upload")
    return readTransfer(line, Direction::upload);
  if (verb == "download")
    return readTransfer(line, Direction::download);
  return readFileAction(verb, line);
}

Action ActionReader::readFileAction(const std::string& verb, ScenarioLine& line) {
  if (verb == "error")
    return readState(line, "Upload Error 28");
  if (verb == "conflict")
    return readState(line, "Conflict with another device");
  if (verb == "state")
    return readState(line, nullptr);
  if (verb == "clear")
    return ClearState{readKnownFile(line)};
  if (verb == "evict")
    return Evict{readKnownFile(line)};
  if (verb == "cancel")
    return CancelDownload{readKnownFile(line)};
  if (verb == "lock")
    return Lock{readKnownFile(line)};
  if (verb == "vanish")
    return Vanish{readKnownFile(line)};
  return readCloudAction(verb, line);
}

Action ActionReader::readCloudAction(const std::string& verb, ScenarioLine& line) const {
  if (verb == "folder")
    return MakeFolder{readPath(line)};
  if (verb == "global")
    return readGlobal(line);
  if (verb == "jobs")
    return readJobs(line);
  if (verb == "no-jobs")
    return ClearJobs{};
  if (verb == "quota")
    return SetQuota{static_cast<std::int64_t>(line.size())};
  if (verb == "kill")
    return readKill(line);
  if (verb == "await")
    return readAwait(line);
  if (verb == "print")
    return readPrint(line);
  if (verb == "replay")
    return readReplay(line);
  if (verb == "end")
    return EndScenario{};
  if (verb == "repeat")
    return RepeatSteps{};
  line.fail("unknown verb \"" + verb + "\"");
}

std::string ActionReader::readKnownFile(ScenarioLine& line) const {
  std::string path = readPath(line);
  if (!files_.contains(path))
    line.fail("no line before this one makes the file \"" + path + "\"");
  return path;
}

Action ActionReader::readFiles(ScenarioLine& line, bool many) {
  const std::uint64_t count = many ? line.count("a number of files") : 1;
  if (count == 0 || count > maxFiles)
    line.fail("from 1 to " + std::to_string(maxFiles) + " files can be made");
  const std::string path = readPath(line);
  if (many != (path.find(NumberedPath::mark) != std::string::npos))
    line.fail(many ? "the path of many files holds {n}" : "{n} is for \"files\"");
  if (files_.contains(path))
    line.fail("a line before this one makes the file \"" + path + "\"");
  MakeFiles files{NumberedPath(path, count), line.size(), false};
  files.remote = line.accept("remote");
  files_.add(files.paths);
  return files;
}

Action ActionReader::readTransfer(ScenarioLine& line, Direction direction) {
  Transfer transfer;
  transfer.direction = direction;
  transfer.path = readPath(line);
  const bool known = files_.contains(transfer.path);
  if (line.nextIsSize())
    transfer.newFile = line.size();
  if (known && transfer.newFile)
    line.fail("the size is for a new file, but \"" + transfer.path + "\" is there already");
  if (!known && !transfer.newFile)
    line.fail("the new file \"" + transfer.path + R"(" needs a size, as in: "a.txt" 2MB over 3s)");
  line.require("over");
  transfer.duration = line.duration("a duration");
  readTransferOptions(line, transfer);
  if (!known)
    files_.add(NumberedPath(transfer.path, 1));
  return transfer;
}

std::vector<Transfer> ActionReader::readTransfers(ScenarioLine& line, Direction direction) {
  const std::uint64_t count = line.count("a number of transfers");
  if (count == 0 || count > maxFiles)
    line.fail("from 1 to " + std::to_string(maxFiles) + " files can be transferred");
  const std::string path = readPath(line);
  const NumberedPath paths(path, count);
  if (path.find(NumberedPath::mark) == std::string::npos || !files_.contains(paths.at(1)) ||
      !files_.contains(paths.at(count)))
    line.fail("no line before this one makes the files \"" + path + "\"");
  Transfer transfer;
  transfer.direction = direction;
  line.require("over");
  transfer.duration = line.duration("a duration");
  readTransferOptions(line, transfer);
  std::vector<Transfer> transfers(count, transfer);
  for (std::uint64_t index = 0; index < count; ++index)
    transfers[index].path = paths.at(index + 1);
  return transfers;
}

Action ActionReader::readState(ScenarioLine& line, const char* usual) const {
  SetState state;
  state.path = readKnownFile(line);
  state.text = usual != nullptr && line.atEnd() ? usual : line.quoted("a state");
  if (state.text.empty() || std::any_of(state.text.begin(), state.text.end(), isControl))
    line.fail("a state is not empty and holds no control characters");
  return state;
}

Action ActionReader::readReplay(ScenarioLine& line) const {
  const Feed feed = readFeed(line);
  try {
    return Print{feed, contentsOf(folder_ / line.quoted("the path of a capture"))};
  } catch (const std::system_error& problem) {
    line.fail(problem.what());
  }
}

} // namespace icloud
