#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

namespace driftmark::test {

/// Makes the subject of one contract test: a fixture around a fake or a real adapter. Instantiate a
/// contract in one source of a test program:
///
///   INSTANTIATE_TEST_SUITE_P(Fake, ClockContract, Values(subject<ClockSubject,
///   FakeClock>("fake")),
///                            subjectName);
template <class Subject> struct SubjectFactory {
  std::string name;
  std::function<std::unique_ptr<Subject>()> make;

  friend void PrintTo(const SubjectFactory& factory, std::ostream* out) { *out << factory.name; }
};

template <class Subject, class Implementation> SubjectFactory<Subject> subject(std::string name) {
  return {.name = std::move(name), .make = [] { return std::make_unique<Implementation>(); }};
}

/// Names the instances of a contract after their subjects.
inline constexpr auto subjectName = [](const auto& info) { return info.param.name; };

} // namespace driftmark::test
