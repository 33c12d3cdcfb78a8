// Which figures the report has, and the bounds that each must and should keep.

#include "Report.h"

#include <array>
#include <charconv>
#include <iomanip>
#include <ostream>
#include <string_view>

namespace driftmark::bench {
namespace {

enum class Better { lower, higher, none };

struct Key {
  std::string_view name;
  Better better;
  double must;
  double aim;
};

constexpr std::array<Key, 24> keys{{
    {"pipeline_over_memchr", Better::lower, 15, 11},
    {"second_pass_over_memchr", Better::lower, 13, 9},
    {"second_pass_shuffled_over_memchr", Better::lower, 16, 11},
    {"first_pass_shuffled_over_memchr", Better::lower, 18, 13},
    {"speedup_over_regex", Better::higher, 10, 15},
    {"known_state_over_raw", Better::lower, 0.2, 0.16},
    {"event_at_100000_over_at_10", Better::lower, 8, 4},
    {"menu_at_100000_active_ms", Better::lower, 1, 0.2},
    {"delayed_200000_over_20000", Better::lower, 15, 12},
    {"status_at_100000_over_at_10000", Better::lower, 15, 12},
    {"small_chunks_over_large", Better::lower, 1.25, 1.15},
    {"pty_speed_over_drain", Better::higher, 0.8, 0.9},
    {"idle_cpu_ms_30s", Better::lower, 1, 0.2},
    {"idle_switches_30s", Better::lower, 3, 1},
    {"idle_rss_over_bare", Better::lower, 1.3, 1.15},
    {"start_over_bare", Better::lower, 1.5, 1.2},
    {"redraws_without_change", Better::lower, 0, 0},
    {"menu_open_ms_under_flood", Better::lower, 50, 16},
    {"survey_over_find", Better::lower, 2.5, 1.5},
    {"survey_main_loop_ms", Better::lower, 16, 5},
    {"rss_after_check_over_bare", Better::lower, 1.3, 1.2},
    {"window_rss_over_bare", Better::none, 0, 0},
    {"survey_calls_over_find", Better::none, 0, 0},
    {"survey_heap_over_paths", Better::none, 0, 0},
}};

std::string rounded(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::fixed, value < 100 ? 3 : 1);
  return {text.data(), end.ptr};
}

std::string plain(double value) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

bool keeps(const Key& key, double value, double bound) {
  return key.better == Better::lower ? value <= bound : value >= bound;
}

std::string_view verdict(const Key& key, double value) {
  if (key.better == Better::none)
    return "for the record";
  if (keeps(key, value, key.aim))
    return "aim";
  return keeps(key, value, key.must) ? "must" : "MISSED";
}

} // namespace

void printTable(std::ostream& out, const Figures& figures) {
  const auto row = [&](std::string_view name, const std::string& value, const std::string& must,
                       const std::string& aim, std::string_view ok) {
    out << std::left << std::setw(34) << name << std::right << std::setw(10) << value
        << std::setw(10) << must << std::setw(10) << aim << "  " << ok << '\n';
  };
  row("key", "value", "must", "aim", "ok");
  for (const Key& key : keys) {
    const auto found = figures.find(std::string(key.name));
    if (found == figures.end())
      continue;
    const double value = found->second;
    const std::string sign = key.better == Better::lower ? "<= " : ">= ";
    const bool bound = key.better != Better::none;
    row(key.name, rounded(value), bound ? sign + plain(key.must) : "",
        bound ? sign + plain(key.aim) : "", verdict(key, value));
  }
}

void printJson(std::ostream& out, const Figures& figures) {
  out << '{';
  std::string_view separator = "\n";
  for (const Key& key : keys)
    if (const auto found = figures.find(std::string(key.name)); found != figures.end()) {
      out << separator << "  \"" << key.name << "\": " << plain(found->second);
      separator = ",\n";
    }
  out << "\n}\n";
}

} // namespace driftmark::bench
