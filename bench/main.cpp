// Runs the benchmarks and prints the figures.

#include "Benches.h"
#include "Report.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <QApplication>
#include <QLoggingCategory>

namespace {

using namespace driftmark::bench;

constexpr std::string_view usage =
    R"(usage: driftmark_bench [--json FILE] [BENCH...]

Measures speed and memory, and prints a table of the figures. The BENCHes are
ingest, known-state, events, delays, status, terminal, menu, survey and program;
all of them run when none is named.

  --json FILE   also writes the figures to FILE
)";

struct Bench {
  std::string_view name;
  void (*run)(Figures& figures, std::ostream& notes);
};

constexpr std::array<Bench, 9> benches{{{"ingest", benchIngest},
                                        {"known-state", benchKnownState},
                                        {"events", benchEvents},
                                        {"delays", benchDelays},
                                        {"status", benchStatus},
                                        {"terminal", benchTerminal},
                                        {"menu", benchMenu},
                                        {"survey", benchSurvey},
                                        {"program", benchProgram}}};

struct Arguments {
  std::string json;
  std::vector<std::string_view> names;
  bool help = false;
};

std::optional<Arguments> parsed(int argc, char** argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--help") {
      arguments.help = true;
    } else if (argument == "--json" && i + 1 < argc) {
      arguments.json = argv[++i];
    } else if (std::ranges::find(benches, argument, &Bench::name) != benches.end()) {
      arguments.names.push_back(argument);
    } else {
      return std::nullopt;
    }
  }
  return arguments;
}

bool isChosen(const Arguments& arguments, std::string_view name) {
  return arguments.names.empty() ||
         std::ranges::find(arguments.names, name) != arguments.names.end();
}

Figures measured(const Arguments& arguments) {
  Figures figures;
  for (const Bench& bench : benches)
    if (isChosen(arguments, bench.name))
      bench.run(figures, std::cout);
  return figures;
}

void writeJson(const std::string& name, const Figures& figures) {
  std::ofstream file(name);
  printJson(file, figures);
  file.close();
  if (!file)
    throw std::runtime_error("cannot write " + name);
}

} // namespace

int main(int argc, char** argv) {
  const auto arguments = parsed(argc, argv);
  if (!arguments) {
    std::cerr << "driftmark_bench: wrong arguments; see --help\n";
    return 2;
  }
  if (arguments->help) {
    std::cout << usage;
    return EXIT_SUCCESS;
  }
  try {
    QLoggingCategory::setFilterRules(QStringLiteral("*.warning=false"));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const Figures figures = measured(*arguments);
    std::cout << '\n';
    printTable(std::cout, figures);
    if (!arguments->json.empty())
      writeJson(arguments->json, figures);
  } catch (const std::exception& error) {
    std::cerr << "driftmark_bench: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
