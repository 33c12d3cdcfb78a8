// Runs every benchmark and prints the figures.

#include "Benches.h"
#include "Report.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <string_view>

#include <QApplication>
#include <QLoggingCategory>

int main(int argc, char** argv) {
  using namespace driftmark::bench;
  std::string json;
  if (argc == 3 && std::string_view(argv[1]) == "--json") {
    json = argv[2];
  } else if (argc != 1) {
    std::cerr << "usage: driftmark_bench [--json FILE]\n";
    return 2;
  }

  try {
    QLoggingCategory::setFilterRules(QStringLiteral("*.warning=false"));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    Figures figures;
    benchIngest(figures, std::cout);
    benchKnownState(figures, std::cout);
    benchEvents(figures, std::cout);
    benchDelays(figures, std::cout);
    benchStatus(figures, std::cout);
    benchTerminal(figures, std::cout);
    benchMenu(figures, std::cout);
    benchSurvey(figures, std::cout);
    benchProgram(figures, std::cout);
    std::cout << '\n';
    printTable(std::cout, figures);
    if (!json.empty()) {
      std::ofstream file(json);
      printJson(file, figures);
      file.close();
      if (!file)
        throw std::runtime_error("cannot write " + json);
    }
  } catch (const std::exception& error) {
    std::cerr << "driftmark_bench: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
