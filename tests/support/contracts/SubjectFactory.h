#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

namespace driftmark::test {

/// Makes the subject of a contract test: a fixture around a fake or an adapter. Instantiate a
/// contract in one source of a test program:
///
///   INSTANTIATE_TEST_SUITE_P(Fake, ClockContract, Values(subject<ClockSubject,
///   FakeClock>("fake")),
///                            subjectName);
template <class Subject> struct SubjectFactory {
  std::string name;
  std::function<std::unique_ptr<Subject>()> make;

  friend std::ostream& operator<<(std::ostream& out, const SubjectFactory& factory) {
    return out << factory.name;
  }
};

template <class Subject, class Implementation>
SubjectFactory<Subject> subject(const std::string& name) {
  return {.name = name, .make = [] { return std::make_unique<Implementation>(); }};
}

/// Names the instances of a contract after their subjects.
inline constexpr auto subjectName = [](const auto& info) { return info.param.name; };

} // namespace driftmark::test
