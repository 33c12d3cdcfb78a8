// How alerts look, and how a user answers them.

#include "platform/linux/dialogs/LinuxDialogs.h"

#include "harness/qt/EventLoop.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/runloop/LinuxMainQueue.h"

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <QApplication>
#include <QDialog>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

QDialog* openAlert() {
  return qobject_cast<QDialog*>(QApplication::activeModalWidget());
}

void pressKey(int key, const QString& text = {}) {
  QWidget* const target = openAlert()->focusWidget();
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
  QCoreApplication::sendEvent(target, &press);
  QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
  QCoreApplication::sendEvent(target, &release);
}

QPushButton* button(int index) {
  return openAlert()->findChild<QPushButton*>(QString("button%1").arg(index));
}

QLabel* label(const char* name) {
  return openAlert()->findChild<QLabel*>(name);
}

/// Saves a picture of the open alert in the folder that DRIFTMARK_SHOTS names, if any.
void photograph(const char* name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here writes the environment
  if (const char* const folder = std::getenv("DRIFTMARK_SHOTS"))
    openAlert()->grab().save(QString("%1/%2.png").arg(folder, name));
}

/// The open alert is no taller than four fifths of the screen, and its buttons are visible.
void expectPartsFitTheScreen() {
  EXPECT_LE(openAlert()->height(), openAlert()->screen()->availableSize().height() * 4 / 5);
  for (const QPushButton* const each : openAlert()->findChildren<QPushButton*>()) {
    const QRect place(each->mapTo(openAlert(), QPoint()), each->size());
    EXPECT_TRUE(openAlert()->rect().contains(place));
    EXPECT_EQ(each->visibleRegion().boundingRect(), each->rect());
  }
}

bool hasInk(const QPixmap& picture) {
  const QImage image = picture.toImage();
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (image.pixel(x, y) != image.pixel(image.width() - 1, 0))
        return true;
  return false;
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += text;
  return all;
}

const Alert offer{.messageText = "Driftmark 1.2 is available",
                  .informativeText = "You have version 1.1. The update is downloaded, verified and "
                                     "installed, and Driftmark then reopens.\n\n"
                                     "• Restarts of the daemon are noticed at once.\n"
                                     "• Less memory for very large drives.",
                  .buttons = {"Install and Relaunch", "Later"}};

class LinuxDialogsTest : public testing::Test {
protected:
  /// Shows `alert` and runs `answer` once it is open.
  std::optional<std::size_t> show(const Alert& alert, const std::function<void()>& answer) {
    QTimer::singleShot(0, &context_, [this, answer] {
      wasOpen_ = openAlert() && openAlert()->isVisible();
      if (wasOpen_)
        answer();
    });
    const std::optional<std::size_t> index = dialogs_.runModal(alert);
    EXPECT_TRUE(wasOpen_);
    EXPECT_EQ(openAlert(), nullptr);
    return index;
  }

  QObject context_;
  bool wasOpen_ = false;
  LinuxBundle bundle_{"/nowhere/driftmark", ""};
  LinuxDialogs dialogs_{bundle_};
};

TEST_F(LinuxDialogsTest, clickedButtonGivesItsIndex) {
  const Alert alert{.messageText = "m", .informativeText = "", .buttons = {"A", "B", "C"}};
  for (int index = 0; index < 3; ++index)
    EXPECT_EQ(show(alert, [&] { button(index)->click(); }), static_cast<std::size_t>(index));
}

TEST_F(LinuxDialogsTest, textsAndTitlesAreNeverMarkup) {
  const Alert alert{.messageText = "<b>R&D</b> & \"more\"",
                    .informativeText = "<img src=x>\n&amp; end",
                    .buttons = {"Save & &Quit", "<i>No</i>"}};
  show(alert, [&] {
    EXPECT_EQ(openAlert()->windowTitle(), "Driftmark");
    EXPECT_EQ(label("messageText")->text().toStdString(), alert.messageText);
    EXPECT_TRUE(label("messageText")->font().bold());
    EXPECT_EQ(label("informativeText")->text().toStdString(), alert.informativeText);
    EXPECT_FALSE(label("informativeText")->font().bold());
    EXPECT_EQ(label("informativeText")->textFormat(), Qt::PlainText);
    EXPECT_EQ(button(0)->text(), "Save && &&Quit");
    EXPECT_TRUE(button(0)->shortcut().isEmpty());
    EXPECT_EQ(button(1)->text(), "<i>No</i>");
    openAlert()->close();
  });
}

TEST_F(LinuxDialogsTest, buttonsAreOrderedFromLeftToRight) {
  const Alert alert{.messageText = "m",
                    .informativeText = "i",
                    .buttons = {"Move to Applications Folder", "Do Not Move", "Help"}};
  QApplication::setLayoutDirection(Qt::RightToLeft);
  show(alert, [&] {
    EXPECT_LT(button(0)->geometry().right(), button(1)->geometry().left());
    EXPECT_LT(button(1)->geometry().right(), button(2)->geometry().left());
    EXPECT_TRUE(button(0)->isDefault());
    openAlert()->close();
  });
  QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(LinuxDialogsTest, returnPressesFirstButtonAndEscapeLast) {
  EXPECT_EQ(show(offer, [] { pressKey(Qt::Key_Return); }), 0U);
  EXPECT_EQ(show(offer, [] { pressKey(Qt::Key_Enter); }), 0U);
  EXPECT_EQ(show(offer, [] { pressKey(Qt::Key_Space, " "); }), 0U);
  EXPECT_EQ(show(offer, [] { pressKey(Qt::Key_Escape); }), 1U);
  EXPECT_EQ(show(offer, [] { openAlert()->close(); }), 1U);
}

TEST_F(LinuxDialogsTest, alertWithoutButtonsHasOkButton) {
  const Alert alert{.messageText = "Driftmark is up to date", .informativeText = "", .buttons = {}};
  EXPECT_EQ(show(alert,
                 [] {
                   EXPECT_EQ(button(0)->text(), "OK");
                   EXPECT_EQ(button(1), nullptr);
                   EXPECT_EQ(label("informativeText"), nullptr);
                   photograph("acknowledge");
                   button(0)->click();
                 }),
            0U);
}

TEST_F(LinuxDialogsTest, partsAreInsideWindowAndDoNotOverlap) {
  show(offer, [] {
    const QRect window = openAlert()->rect();
    std::vector<QRect> parts;
    for (const QWidget* const part : std::initializer_list<QWidget*>{
             label("messageText"), label("informativeText"), button(0), button(1)}) {
      const QRect place(part->mapTo(openAlert(), QPoint()), part->size());
      EXPECT_TRUE(window.contains(place));
      for (const QRect& other : parts)
        EXPECT_FALSE(place.intersects(other));
      parts.push_back(place);
    }
    EXPECT_GE(button(0)->width(), button(0)->sizeHint().width());
    photograph("offer");
    openAlert()->close();
  });
}

TEST_F(LinuxDialogsTest, longPathIsBrokenIntoLines) {
  Alert alert = offer;
  alert.informativeText = "Driftmark is now in ~/" + std::string(300, 'x') + ". Move it?";
  show(alert, [] {
    EXPECT_LT(openAlert()->width(), 700);
    EXPECT_GE(label("informativeText")->height(), 3 * openAlert()->fontMetrics().height());
    photograph("path");
    openAlert()->close();
  });
}

TEST_F(LinuxDialogsTest, textThatIsTooTallScrolls) {
  Alert alert = offer;
  for (int line = 1; line < 2000; ++line)
    alert.informativeText += "\nline " + std::to_string(line);
  show(alert, [] {
    expectPartsFitTheScreen();
    const auto* const area = openAlert()->findChild<QScrollArea*>();
    ASSERT_NE(area, nullptr);
    EXPECT_TRUE(area->verticalScrollBar()->isVisible());
    EXPECT_LE(label("informativeText")->width(), area->viewport()->width());
    EXPECT_GT(label("informativeText")->height(), 1999 * openAlert()->fontMetrics().height());
    photograph("scrolled");
    openAlert()->close();
  });
}

TEST_F(LinuxDialogsTest, tallMessageLeavesRoomForTextAndButtons) {
  for (const std::string& name :
       {std::string(100'000, 'W'), std::string(250, '\n'), repeated("\u0e01\u0e33\u0e49", 1000)}) {
    Alert alert = offer;
    alert.messageText = "Remove Downloads in " + name + "?";
    for (int line = 1; line < 2000; ++line)
      alert.informativeText += "\nline " + std::to_string(line);
    show(alert, [] {
      expectPartsFitTheScreen();
      EXPECT_GT(openAlert()->findChild<QScrollArea*>()->height(), 100);
      photograph("tall-message");
      openAlert()->close();
    });
  }
}

TEST_F(LinuxDialogsTest, longestFileNameIsDisplayedWhole) {
  Alert alert = offer;
  alert.messageText = "Remove Downloads in " + std::string(255, 'W') + "?";
  show(alert, [&] {
    EXPECT_EQ(label("messageText")->text().toStdString(), alert.messageText);
    EXPECT_EQ(label("messageText")->height(),
              label("messageText")->heightForWidth(label("messageText")->width()));
    photograph("longest-name");
    openAlert()->close();
  });
}

TEST_F(LinuxDialogsTest, scrolledTextIsDisplayedToItsEnd) {
  Alert alert = offer;
  alert.informativeText = std::string(20'000, 'x') + "\n\nThe end.";
  QImage top;
  show(alert, [&] {
    auto* const area = openAlert()->findChild<QScrollArea*>();
    ASSERT_NE(area, nullptr);
    top = area->viewport()->grab().toImage();
    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
    EXPECT_TRUE(hasInk(area->viewport()->grab(QRect(0, area->viewport()->height() - 16, 60, 16))));
    EXPECT_NE(area->viewport()->grab().toImage(), top);
    photograph("long-word");
    openAlert()->close();
  });
}

TEST_F(LinuxDialogsTest, mainQueueRunsWhileAlertIsOpen) {
  LinuxMainQueue queue;
  std::string order;
  queue.async([&] {
    order += "open ";
    order += std::to_string(dialogs_.runModal(offer).value());
  });
  queue.async([&] { order += "task "; });
  queue.after(Seconds(0.01), [&] {
    order += "later ";
    button(0)->click();
  });
  EXPECT_TRUE(runUntil([&] { return order.ends_with('0'); }));
  EXPECT_EQ(order, "open task later 0");
}

TEST_F(LinuxDialogsTest, nestedAlertIsAnsweredFirst) {
  LinuxMainQueue queue;
  std::vector<std::optional<std::size_t>> answers;
  queue.async([&] { answers.push_back(dialogs_.runModal(offer)); });
  queue.async([&] {
    answers.push_back(dialogs_.runModal({"second", "", {"x", "y", "z"}}));
    queue.async([] { button(0)->click(); });
  });
  queue.async([] { openAlert()->close(); });
  EXPECT_TRUE(runUntil([&] { return answers.size() == 2; }));
  EXPECT_EQ(answers, (std::vector<std::optional<std::size_t>>{2, 0}));
}

TEST_F(LinuxDialogsTest, applicationExitLeavesAlertUnanswered) {
  LinuxMainQueue queue;
  std::vector<std::optional<std::size_t>> answers;
  queue.async([&] { answers.push_back(dialogs_.runModal(offer)); });
  queue.async([] { QCoreApplication::exit(); });
  QCoreApplication::exec();
  EXPECT_EQ(answers, std::vector<std::optional<std::size_t>>{std::nullopt});
}

TEST_F(LinuxDialogsTest, qtQuitClosesAlertAsUserDoes) {
  LinuxMainQueue queue;
  std::vector<std::optional<std::size_t>> answers;
  queue.async([&] { answers.push_back(dialogs_.runModal(offer)); });
  queue.async([] { QCoreApplication::quit(); });
  QCoreApplication::exec();
  EXPECT_EQ(answers, std::vector<std::optional<std::size_t>>{1});
}

TEST_F(LinuxDialogsTest, alertAfterApplicationQuitIsUnanswered) {
  LinuxMainQueue queue;
  std::vector<std::optional<std::size_t>> answers;
  queue.async([&] {
    QCoreApplication::quit();
    answers.push_back(dialogs_.runModal(offer));
  });
  QCoreApplication::exec();
  EXPECT_EQ(answers, std::vector<std::optional<std::size_t>>{std::nullopt});
}

} // namespace
} // namespace driftmark::test
