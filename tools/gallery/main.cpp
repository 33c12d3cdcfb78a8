// Saves pictures of the symbols, the status item in each state, menus and the about panel in a
// folder, in light and dark colours. Set QT_SCALE_FACTOR=2 for high resolution and
// QT_QPA_PLATFORM=offscreen without a display.

#include "SampleMenus.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/menubar/LinuxStatusItem.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QStyleFactory>

namespace {

using namespace driftmark;

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
                                           "checkmark.circle"};

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

QPalette darkPalette() {
  QPalette palette(QColor(45, 45, 48));
  palette.setColor(QPalette::Base, QColor(30, 30, 32));
  palette.setColor(QPalette::Highlight, QColor(10, 105, 220));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

void save(const QPixmap& picture, const QDir& folder, const QString& name) {
  const QString file = folder.filePath(name + QStringLiteral(".png"));
  if (!picture.save(file)) {
    std::cerr << "driftmark_gallery: cannot write " << file.toStdString() << '\n';
    std::exit(EXIT_FAILURE);
  }
}

QPixmap symbolSheet() {
  const QPalette palette = QApplication::palette();
  const qreal ratio = qApp->devicePixelRatio();
  const int cell = 28;
  const int columns = static_cast<int>(symbolNames.size());
  QPixmap sheet(QSize(columns * cell, cell) * ratio);
  sheet.setDevicePixelRatio(ratio);
  sheet.fill(palette.color(QPalette::Window));
  SymbolImages images;
  QPainter painter(&sheet);
  for (int column = 0; column < columns; ++column)
    painter.drawPixmap(column * cell + 6, 6,
                       images.image(symbolNames[static_cast<std::size_t>(column)],
                                    palette.color(QPalette::WindowText), 16, ratio));
  return sheet;
}

QPixmap stacked(const std::vector<QPixmap>& pictures) {
  const qreal ratio = pictures.front().devicePixelRatio();
  QSizeF size;
  for (const QPixmap& picture : pictures)
    size = {std::max(size.width(), picture.deviceIndependentSize().width()),
            size.height() + picture.deviceIndependentSize().height() + 4};
  QPixmap all((size * ratio).toSize());
  all.setDevicePixelRatio(ratio);
  all.fill(Qt::gray);
  QPainter painter(&all);
  qreal top = 0;
  for (const QPixmap& picture : pictures) {
    painter.drawPixmap(QPointF(size.width() - picture.deviceIndependentSize().width(), top),
                       picture);
    top += picture.deviceIndependentSize().height() + 4;
  }
  return all;
}

void saveAll(const QDir& folder, const QString& look) {
  save(symbolSheet(), folder, QStringLiteral("symbols-") + look);

  LinuxStatusItem item;
  std::vector<QPixmap> strips;
  for (const State& state : states) {
    item.setSymbol({state.symbol, {}}, "icloud");
    item.setTitle(state.title);
    strips.push_back(item.strip().grab());
  }
  item.setTitle("42%");
  item.strip().setHighlighted(true);
  strips.push_back(item.strip().grab());
  item.strip().setHighlighted(false);
  save(stacked(strips), folder, QStringLiteral("strip-") + look);

  for (const gallery::SampleMenu& sample : gallery::sampleMenus()) {
    item.setMenu([&sample] { return sample.menu; }, [] {});
    item.strip().press();
    item.menu()->setActiveAction(item.menu()->actions().at(3));
    save(item.menu()->grab(), folder,
         QStringLiteral("menu-%1-%2").arg(QString::fromStdString(sample.name), look));
    item.menu()->close();
  }

  AboutPanel about;
  about.showAboutPanel("Driftmark", "1.2.0", "Copyright © 2026 the Driftmark authors",
                       "Menu bar monitor for iCloud Drive sync activity\n"
                       "https://driftmark.example/");
  for (QWidget* const widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && qobject_cast<QDialog*>(widget) != nullptr)
      save(widget->grab(), folder, QStringLiteral("about-") + look);
}

} // namespace

int main(int argc, char* argv[]) {
  const QApplication application(argc, argv);
  if (argc != 2) {
    std::cerr << "usage: driftmark_gallery FOLDER\n";
    return 2;
  }
  const QDir folder(QString::fromLocal8Bit(argv[1]));
  if (!folder.mkpath(QStringLiteral("."))) {
    std::cerr << "driftmark_gallery: cannot make the folder " << argv[1] << '\n';
    return EXIT_FAILURE;
  }
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  saveAll(folder, QStringLiteral("light"));
  QApplication::setPalette(darkPalette());
  saveAll(folder, QStringLiteral("dark"));
  return EXIT_SUCCESS;
}
