// How alerts look.

#include "Themes.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/dialogs/LinuxDialogs.h"

#include <algorithm>
#include <functional>

#include <QApplication>
#include <QDialog>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

class AlertDialogTest : public testing::Test {
protected:
  static QDialog* openAlert() { return qobject_cast<QDialog*>(QApplication::activeModalWidget()); }
  static QPushButton* button(int index) {
    return openAlert()->findChild<QPushButton*>(QString("button%1").arg(index));
  }

  /// Shows `alert`, runs `look` and closes it.
  void show(const Alert& alert, const std::function<void()>& look) {
    bool wasOpen = false;
    QTimer::singleShot(0, &context_, [&] {
      wasOpen = true;
      look();
      openAlert()->close();
    });
    dialogs_.runModal(alert);
    EXPECT_TRUE(wasOpen);
  }

  QObject context_;
  LinuxBundle bundle_{"/nowhere/driftmark", ""};
  LinuxDialogs dialogs_{bundle_};
};

TEST_F(AlertDialogTest, desktopOrdersButtons) {
  const auto isFirstOnRight = [this] {
    bool isOnRight = false;
    show({"m", "", {"A", "B"}}, [&] {
      isOnRight = button(0)->x() > button(1)->x();
      EXPECT_TRUE(button(0)->isDefault());
    });
    return isOnRight;
  };
  EXPECT_FALSE(isFirstOnRight());
  qApp->setStyleSheet("QDialogButtonBox { button-layout: 3 }");
  EXPECT_TRUE(isFirstOnRight());
  qApp->setStyleSheet({});
}

TEST_F(AlertDialogTest, alertHasIconUsualSizesAndNoButtonsToMinimise) {
  show({"m", "", {"A", "B"}}, [] {
    const int screen = openAlert()->screen()->availableSize().width();
    EXPECT_EQ(openAlert()->width(), std::min(420, screen));
    const auto* const icon = openAlert()->findChild<QWidget*>("icon");
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ(icon->size(), QSize(64, 64));
    EXPECT_LT(icon->geometry().right(),
              openAlert()->findChild<QLabel*>("messageText")->geometry().left());
    for (const int index : {0, 1}) {
      EXPECT_GE(button(index)->width(), 90);
      EXPECT_GE(button(index)->height(), 28);
      EXPECT_TRUE(button(index)->icon().isNull());
    }
    EXPECT_FALSE(openAlert()->windowIcon().pixmap(32, 32).isNull());
    EXPECT_FALSE(openAlert()->windowFlags() & Qt::WindowMinMaxButtonsHint);
    EXPECT_TRUE(openAlert()->windowFlags() & Qt::WindowCloseButtonHint);
  });
}

TEST_F(AlertDialogTest, defaultButtonIsFilledAndReadable) {
  for (const QColor& desktop : {QColor(239, 239, 239), QColor(45, 45, 48)}) {
    const Theme theme{QPalette(desktop)};
    show({"m", "", {"\u2588", "\u2588"}}, [] {
      const auto fill = [](int index) {
        const QImage image = button(index)->grab().toImage();
        return image.pixelColor(image.width() / 8, image.height() / 2);
      };
      const QColor chosen = QApplication::palette().color(QPalette::Highlight);
      EXPECT_EQ(fill(0), chosen);
      EXPECT_NE(fill(1), chosen);
      const QImage image = button(0)->grab().toImage();
      EXPECT_EQ(image.pixelColor(image.width() / 2, image.height() / 2), QColor(Qt::white));
    });
  }
}

} // namespace
} // namespace driftmark::test
