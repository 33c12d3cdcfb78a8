// Saves pictures of what the program shows in a folder.

#include "Overview.h"
#include "SampleMenus.h"
#include "Themes.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/looks/Look.h"
#include "platform/linux/menubar/LinuxStatusItem.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QTimer>

namespace {

using namespace driftmark;

constexpr const char* usage =
    "usage: driftmark_gallery FOLDER\n"
    "\n"
    "Saves pictures of what the program shows in FOLDER: symbols, the status item in each state,\n"
    "menus, alerts and panels, in light, dark and high-contrast colours. Set QT_SCALE_FACTOR=2 for "
    "high resolution and\n"
    "QT_QPA_PLATFORM=offscreen without a display.\n";

const std::vector<std::string> symbolNames{"icloud",
                                           "icloud.and.arrow.up",
                                           "icloud.and.arrow.down",
                                           "arrow.triangle.2.circlepath.icloud",
                                           "arrow.clockwise.icloud",
                                           "exclamationmark.icloud",
                                           "icloud.slash",
                                           "folder",
                                           "arrow.up.circle",
                                           "arrow.down.circle",
                                           "exclamationmark.circle",
                                           "exclamationmark.triangle",
                                           "checkmark.circle",
                                           "checkmark"};

struct State {
  std::string symbol;
  std::string title;
};
const std::vector<State> states{{"icloud", ""},
                                {"icloud.and.arrow.up", "9%"},
                                {"icloud.and.arrow.down", "42%"},
                                {"arrow.triangle.2.circlepath.icloud", "100%"},
                                {"arrow.clockwise.icloud", ""},
                                {"exclamationmark.icloud", ""}};

const Alert question{.messageText = "Remove Downloads in Holiday?",
                     .informativeText =
                         "41 files using 20.5 MB on this Mac will be removed from local storage. "
                         "They stay in iCloud and download again when opened. Files not yet "
                         "uploaded are left alone.",
                     .buttons = {"Remove Downloads", "Cancel"}};

Alert longAlert() {
  Alert alert{.messageText = "Driftmark 1.2.0 is available",
              .informativeText = "You have version 1.1.0.\n",
              .buttons = {"Install and Relaunch", "Later"}};
  for (int line = 1; line < 60; ++line)
    alert.informativeText.append("\n• Change ").append(std::to_string(line));
  return alert;
}

/// Saves pictures of one theme.
class Gallery {
public:
  Gallery(const QDir& folder, QString look) : folder_(folder), look_(std::move(look)) {}

  void saveAll() {
    saveSymbols();
    saveStrips();
    for (const gallery::SampleMenu& sample : gallery::sampleMenus())
      saveMenu(sample);
    saveDialogs();
  }

private:
  void save(const QPixmap& picture, const QString& name) const {
    const QString file = folder_.filePath(QStringLiteral("%1-%2.png").arg(name, look_));
    if (!picture.save(file))
      throw std::runtime_error("cannot write " + file.toStdString());
  }

  /// Each symbol at 16, 24 and 32 pixels, and enlarged by 8.
  void saveSymbols() const {
    constexpr int cell = 40;
    const Look look(QApplication::palette(), QApplication::font());
    QPixmap sheet(static_cast<int>(symbolNames.size()) * cell, 3 * cell);
    sheet.fill(look.ground());
    SymbolImages images;
    {
      QPainter painter(&sheet);
      for (int row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < symbolNames.size(); ++column)
          painter.drawPixmap(static_cast<int>(column) * cell + 4, row * cell + 4,
                             images.image(symbolNames[column], look.ink(), 16 + 8 * row, 1));
    }
    save(sheet, "symbols");
    save(sheet.scaled(sheet.size() * 8), "symbols-enlarged");
  }

  void saveStrips() {
    std::vector<QPixmap> strips;
    for (const State& state : states) {
      item_.setSymbol({state.symbol, {}}, "icloud");
      item_.setTitle(state.title);
      strips.push_back(item_.strip().grab());
    }
    item_.setTitle("42%");
    item_.strip().setHighlighted(true);
    strips.push_back(item_.strip().grab());
    item_.strip().setHighlighted(false);

    constexpr int gap = 4;
    const qreal ratio = item_.strip().devicePixelRatioF();
    QSizeF size;
    for (const QPixmap& strip : strips)
      size = {std::max(size.width(), strip.deviceIndependentSize().width()),
              size.height() + strip.deviceIndependentSize().height() + gap};
    QPixmap all((size * ratio).toSize());
    all.setDevicePixelRatio(ratio);
    all.fill(Qt::gray);
    QPainter painter(&all);
    qreal top = 0;
    for (const QPixmap& strip : strips) {
      painter.drawPixmap(QPointF(size.width() - strip.deviceIndependentSize().width(), top), strip);
      top += strip.deviceIndependentSize().height() + gap;
    }
    painter.end();
    save(all, "strip");
  }

  void saveMenu(const gallery::SampleMenu& sample) {
    item_.setMenu([&sample] { return sample.menu; }, [] {});
    item_.strip().press();
    item_.menu()->setActiveAction(item_.menu()->actions().at(3));
    save(item_.menu()->grab(), QStringLiteral("menu-") + QString::fromStdString(sample.name));
    item_.menu()->close();
  }

  void saveDialogs() const {
    AboutPanel about;
    about.showAboutPanel("Driftmark", "1.2.0", "Copyright © 2026 the Driftmark authors",
                         "Menu bar monitor for iCloud Drive sync activity\n"
                         "https://driftmark.example/");
    for (QWidget* const widget : QApplication::topLevelWidgets())
      if (widget->objectName() == "AboutPanel")
        save(widget->grab(), "about");

    const LinuxBundle bundle("/nowhere/driftmark", "");
    LinuxDialogs dialogs(bundle);
    saveModal("alert", [&] { dialogs.runModal(question); });
    saveModal("alert-long", [&] { dialogs.runModal(longAlert()); });
    saveModal("folders", [&] {
      dialogs.chooseFolder({.title = "Free Up Space",
                            .message = "Choose a folder. Downloaded files inside it will be "
                                       "removed from this Mac; they stay in iCloud and download "
                                       "again when opened.",
                            .prompt = "Choose",
                            .directory = folder_.absolutePath().toStdString(),
                            .directoryName = "iCloud Drive"});
    });
  }

  /// Saves a picture of the window that `show` opens, and closes it.
  void saveModal(const char* name, const std::function<void()>& show) const {
    QPixmap picture;
    QTimer::singleShot(500, qApp, [&picture] {
      QWidget* const window = QApplication::activeModalWidget();
      picture = window->grab();
      window->close();
    });
    show();
    save(picture, name);
  }

  const QDir folder_;
  const QString look_;
  LinuxStatusItem item_;
};

} // namespace

int main(int argc, char* argv[]) {
  const std::string_view argument = argc > 1 ? argv[1] : "";
  if (argument == "--help") {
    std::cout << usage;
    return EXIT_SUCCESS;
  }
  if (argc != 2 || argument.starts_with("-")) {
    std::cerr << "driftmark_gallery: needs one FOLDER; see --help\n";
    return 2;
  }
  const QApplication application(argc, argv);
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  if (!folder.mkpath(QStringLiteral("."))) {
    std::cerr << "driftmark_gallery: cannot make the folder " << argv[1] << '\n';
    return EXIT_FAILURE;
  }
  QApplication::setQuitOnLastWindowClosed(false);
  Look::apply();
  try {
    for (const gallery::Theme& theme : gallery::themes()) {
      QApplication::setPalette(Look::paletteFor(theme.palette));
      Gallery(folder, theme.name).saveAll();
    }
    gallery::saveOverviews(folder);
  } catch (const std::runtime_error& error) {
    std::cerr << "driftmark_gallery: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
