// Which figures of a long run count as growth.

#include "soak/Judgement.h"

#include <algorithm>
#include <cstdio>

namespace driftmark::soak {
namespace {

using icloud::ProcessHoldings;
using Samples = std::vector<ProcessHoldings>;
using Number = std::size_t ProcessHoldings::*;

constexpr std::size_t allowedGrowth = 1024; ///< KiB
constexpr std::size_t allowedPercent = 2;

std::size_t mostHeld(const Samples& samples, std::size_t steady, Number number) {
  const std::size_t length = std::clamp<std::size_t>(steady, 1, samples.size());
  std::size_t most = 0;
  for (auto first = samples.begin(); samples.end() - first >= std::ptrdiff_t(length); ++first) {
    const auto least = std::ranges::min_element(first, first + std::ptrdiff_t(length), {}, number);
    most = std::max(most, *least.*number);
  }
  return most;
}

ProcessHoldings maximaOf(Samples::const_iterator first, Samples::const_iterator last) {
  const auto most = [&](Number number) {
    return *std::ranges::max_element(first, last, {}, number).*number;
  };
  return {.memory = most(&ProcessHoldings::memory),
          .descriptors = most(&ProcessHoldings::descriptors),
          .threads = most(&ProcessHoldings::threads),
          .children = most(&ProcessHoldings::children)};
}

std::string changed(const std::string& what, std::size_t first, std::size_t last) {
  return what + ": " + std::to_string(first) + " at most in the first third, " +
         std::to_string(last) + " in the last";
}

} // namespace

ProcessHoldings figuresOf(const Samples& samples, std::size_t steady) {
  ProcessHoldings figures = maximaOf(samples.begin(), samples.end());
  for (const Number number :
       {&ProcessHoldings::descriptors, &ProcessHoldings::threads, &ProcessHoldings::children})
    figures.*number = mostHeld(samples, steady, number);
  return figures;
}

Judgement judge(const Samples& figures) {
  const auto third = static_cast<std::ptrdiff_t>(figures.size() / 3);
  if (third == 0)
    return {{}, {}, {"the run is too short to compare its thirds"}};
  Judgement judgement{maximaOf(figures.begin(), figures.begin() + third),
                      maximaOf(figures.end() - third, figures.end()),
                      {}};
  const ProcessHoldings& first = judgement.first;
  const ProcessHoldings& last = judgement.last;
  const auto requireEqual = [&](const char* what, Number number) {
    if (first.*number != last.*number)
      judgement.complaints.push_back(changed(what, first.*number, last.*number));
  };
  requireEqual("descriptors", &ProcessHoldings::descriptors);
  requireEqual("threads", &ProcessHoldings::threads);
  requireEqual("children", &ProcessHoldings::children);
  const std::size_t allowed = std::max(allowedGrowth, first.memory * allowedPercent / 100);
  if (last.memory > first.memory + allowed)
    judgement.complaints.push_back(changed("memory in KiB", first.memory, last.memory));
  return judgement;
}

} // namespace driftmark::soak
