// The program that fetches what is behind a URL, in a process of its own: the network and TLS
// libraries take megabytes, which its end gives back.

#include "Fetch.h"
#include "FetchOptions.h"

#include <csignal>
#include <cstdio>

#include <QCoreApplication>
#include <QLoggingCategory>

int main(int argc, char* argv[]) {
  using namespace driftmark;
  std::signal(SIGPIPE, SIG_IGN);
  const auto options = FetchOptions::from({argv + 1, argv + argc});
  if (!options) {
    std::fprintf(stderr, "driftmark-fetch: wrong arguments; see --help\n");
    return 2;
  }
  if (options->help) {
    std::fputs(FetchOptions::usage, stdout);
    return 0;
  }
  QLoggingCategory::setFilterRules(QStringLiteral("*.warning=false"));
  const QCoreApplication application(argc, argv);
  Fetch fetch(*options);
  return QCoreApplication::exec();
}
