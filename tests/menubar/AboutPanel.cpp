#include "Input.h"
#include "harness/qt/EventLoop.h"
#include "platform/linux/dialogs/LinuxDialogs.h"

#include <string>
#include <vector>

#include <QApplication>
#include <QImage>
#include <QLabel>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

std::vector<QWidget*> panels() {
  std::vector<QWidget*> panels;
  for (QWidget* const widget : QApplication::topLevelWidgets())
    if (widget->objectName() == "AboutPanel")
      panels.push_back(widget);
  return panels;
}

std::string text(const QWidget& panel, const char* name) {
  const auto* const label = panel.findChild<QLabel*>(QLatin1String(name));
  return label->isVisible() ? label->text().toStdString() : "(hidden)";
}

TEST(AboutPanel, panelShowsGivenTexts) {
  AboutPanel about;
  about.showAboutPanel("Driftmark", "1.2.0", "Copyright <b>us</b>", "A line\nhttps://a.example/");
  ASSERT_EQ(panels().size(), 1U);
  const QWidget& panel = *panels().front();
  EXPECT_TRUE(panel.isVisible());
  EXPECT_FALSE(panel.isModal());
  EXPECT_EQ(panel.windowTitle(), "About Driftmark");
  EXPECT_EQ(text(panel, "name"), "Driftmark");
  EXPECT_EQ(text(panel, "version"), "Version 1.2.0");
  EXPECT_EQ(text(panel, "credits"), "A line\nhttps://a.example/");
  EXPECT_EQ(text(panel, "copyright"), "Copyright <b>us</b>");
  for (const QLabel* const label : panel.findChildren<QLabel*>()) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
    EXPECT_TRUE(panel.rect().contains(label->geometry()));
  }
}

TEST(AboutPanel, emptyTextTakesNoSpace) {
  AboutPanel about;
  about.showAboutPanel("Driftmark", "", "", "A line");
  EXPECT_EQ(text(*panels().front(), "version"), "(hidden)");
  EXPECT_EQ(text(*panels().front(), "copyright"), "(hidden)");
  const int height = panels().front()->sizeHint().height();
  about.showAboutPanel("Driftmark", "1.2.0", "", "A line");
  EXPECT_EQ(text(*panels().front(), "version"), "Version 1.2.0");
  EXPECT_GT(panels().front()->sizeHint().height(), height);
}

TEST(AboutPanel, escapeClosesTheOnePanel) {
  AboutPanel about;
  const auto show = [&about] { about.showAboutPanel("Driftmark", "1", "", "A line"); };
  show();
  QWidget* const panel = panels().front();
  show();
  EXPECT_THAT(panels(), testing::ElementsAre(panel));
  pressKey(*panel, Qt::Key_Escape);
  EXPECT_FALSE(panel->isVisible());
  show();
  EXPECT_THAT(panels(), testing::ElementsAre(panel));
  EXPECT_TRUE(panel->isVisible());
}

TEST(AboutPanel, iconIsShown) {
  AboutPanel about;
  about.showAboutPanel("Driftmark", "1", "", "A line");
  const QImage image = panels().front()->grab().toImage();
  int blue = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      blue += image.pixelColor(x, y).blue() > image.pixelColor(x, y).red() + 80 ? 1 : 0;
  EXPECT_GT(blue, 2000);
}

TEST(AboutPanel, contentsAreCentred) {
  AboutPanel about;
  about.showAboutPanel("Driftmark", "1", "", "A longer line");
  const QWidget& panel = *panels().front();
  const auto* const icon = panel.findChild<QWidget*>("icon");
  EXPECT_EQ(icon->size(), QSize(96, 96));
  EXPECT_NEAR(icon->geometry().center().x(), panel.rect().center().x(), 1);
  const auto* const name = panel.findChild<QLabel*>("name");
  EXPECT_EQ(name->font().pixelSize(), 17);
  EXPECT_TRUE(name->font().bold());
  EXPECT_EQ(name->alignment(), Qt::AlignCenter);
}

TEST(AboutPanel, panelIsDestroyedWithItsOwner) {
  { AboutPanel().showAboutPanel("Driftmark", "1", "", "A line"); }
  EXPECT_TRUE(panels().empty());
}

} // namespace
} // namespace driftmark::test
