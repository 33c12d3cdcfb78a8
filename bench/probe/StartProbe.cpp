// A plugin that says on standard output when a program is up: when its event loop runs or, where
// DRIFTMARK_PROBE says "drawing", when a window of it has been drawn.

#include <QCoreApplication>
#include <QEvent>
#include <QGenericPlugin>
#include <QTimer>
#include <QWidget>

#include <unistd.h>

namespace driftmark::bench {

class Probe final : public QObject {
public:
  explicit Probe(bool awaitsDrawing) {
    if (awaitsDrawing)
      QCoreApplication::instance()->installEventFilter(this);
    else
      tell();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint && watched->isWidgetType()) {
      QCoreApplication::instance()->removeEventFilter(this);
      tell();
    }
    return false;
  }

private:
  /// From the event loop, after what it does now.
  void tell() {
    QTimer::singleShot(0, this, [] {
      const char news = '\n';
      [[maybe_unused]] const ssize_t count = write(STDOUT_FILENO, &news, 1);
    });
  }
};

class StartProbe : public QGenericPlugin {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "startprobe.json")

public:
  QObject* create(const QString& /*name*/, const QString& /*specification*/) override {
    return new Probe(qgetenv("DRIFTMARK_PROBE") == "drawing");
  }
};

} // namespace driftmark::bench

#include "StartProbe.moc"
