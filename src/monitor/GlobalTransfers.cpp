// Which transfers of the global feed still count, and what they sum up to.

#include "monitor/GlobalTransfers.h"

#include "support/Log.h"

#include <limits>

namespace driftmark {

bool GlobalTransfers::report(std::int64_t total, Date now) {
  const auto [known, isNew] = byTotal_.try_emplace(total);
  if (isNew)
    known->second = transfers_.insert({total, now});
  else
    transfers_.update(known->second, [&](Transfer& transfer) { transfer.lastReport = now; });
  return isNew;
}

void GlobalTransfers::finish(std::int64_t total) {
  const auto known = byTotal_.find(total);
  if (known == byTotal_.end())
    return;
  transfers_.erase(known->second);
  byTotal_.erase(known);
}

void GlobalTransfers::prune(Date now) {
  while (!empty() && !counts(transfers_.entries().front(), now))
    finish(transfers_.entries().front().total);
}

std::optional<GlobalActivity> GlobalTransfers::activity(Date now) const {
  transfers_.moveBorder([&](const Transfer& transfer) { return !counts(transfer, now); });
  const std::size_t count = transfers_.recentCount();
  if (count == 0)
    return std::nullopt;
  const WideInteger bytes = transfers_.recent().bytes;
  if (bytes > std::numeric_limits<std::int64_t>::max())
    fatalError("the sizes of the global transfers exceed 64 bits");
  return GlobalActivity{static_cast<int>(count), static_cast<std::int64_t>(bytes)};
}

} // namespace driftmark
