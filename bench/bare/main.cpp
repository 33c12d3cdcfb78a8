// Nothing but a QApplication: what every Qt program costs. With the argument "window" it also shows
// a small window with a frame and a text, which is the least that a status item draws.

#include <optional>
#include <string_view>

#include <QApplication>
#include <QPainter>
#include <QWidget>

namespace {

class Window final : public QWidget {
protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawRoundedRect(rect().adjusted(2, 2, -2, -2), 6, 6);
    painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("42%"));
  }
};

} // namespace

int main(int argc, char* argv[]) {
  const QApplication application(argc, argv);
  std::optional<Window> window;
  if (argc > 1 && std::string_view(argv[1]) == "window")
    window.emplace().show();
  return QApplication::exec();
}
