#pragma once

#include "Items.h"
#include "platform/linux/menubar/LinuxStatusItem.h"

#include <string>
#include <utility>
#include <vector>

#include <QAction>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QScreen>
#include <QToolTip>

#include <gtest/gtest.h>

namespace driftmark::test {

/// Opens menus of the status item.
class DropDownMenuTest : public testing::Test {
protected:
  MenuBarStrip& strip() { return item_.strip(); }
  DropDownMenu& menu() { return *item_.menu(); }
  const MenuRow& row(int index) { return menu().row(static_cast<std::size_t>(index)); }
  QAction& action(int index) { return *menu().actions().at(index); }

  /// Opens the menu with these items.
  void open(Menu items) {
    item_.setMenu([items = std::move(items)] { return items; }, [] {});
    strip().press();
    ASSERT_NE(item_.menu(), nullptr);
    ASSERT_TRUE(menu().isVisible());
  }

  static int screenWidth() { return QGuiApplication::primaryScreen()->availableGeometry().width(); }

  /// The complete title of each row; "-" for a separator.
  std::vector<std::string> titles() {
    std::vector<std::string> titles;
    for (const QAction* const row : menu().actions())
      titles.push_back(row->isSeparator() ? "-" : row->data().toString().toStdString());
    return titles;
  }

  /// The text that is drawn for a row with this title.
  std::string drawn(const std::string& title) {
    open({command(title)});
    std::string text = action(0).text().toStdString();
    menu().close();
    return text;
  }

  /// The text of the tool tip of a row.
  std::string toolTipOver(int index) {
    const QPoint position = menu().actionGeometry(&action(index)).center();
    QHelpEvent event(QEvent::ToolTip, position, menu().mapToGlobal(position));
    QCoreApplication::sendEvent(&menu(), &event);
    return QToolTip::text().toStdString();
  }

  LinuxStatusItem item_;
};

} // namespace driftmark::test
