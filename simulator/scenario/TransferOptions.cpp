#include "scenario/TransferOptions.h"

namespace icloud {
namespace {

constexpr int mostTicks = 100'000;

void readStall(ScenarioLine& line, Transfer& transfer) {
  line.require("at");
  const double percent = line.percent();
  line.require("for");
  transfer.stall = Transfer::Stall{percent, line.duration("a duration")};
}

void readEnding(ScenarioLine& line, Transfer& transfer, Transfer::Ending ending) {
  line.require("at");
  transfer.endsAt = line.percent();
  transfer.ending = ending;
  if (ending == Transfer::Ending::cancel && transfer.direction == Direction::upload)
    line.fail("only a download can be cancelled");
}

} // namespace

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
      readEnding(line, transfer, Transfer::Ending::cancel);
    } else if (line.accept("vanishing")) {
      readEnding(line, transfer, Transfer::Ending::vanish);
    } else {
      line.fail("unknown option of a transfer: " + line.rest());
    }
  }
  checkPace(line, transfer.duration, transfer.every);
  if (transfer.stall && transfer.stall->percent >= transfer.endsAt)
    line.fail("a transfer stalls before it ends");
}

void checkPace(const ScenarioLine& line, Milliseconds duration, Milliseconds every) {
  if (duration.count() == 0 || every.count() == 0)
    line.fail("a transfer and its steps take longer than nothing");
  if (duration / every > mostTicks)
    line.fail("a transfer has at most " + std::to_string(mostTicks) + " steps");
}

} // namespace icloud
