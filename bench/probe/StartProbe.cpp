// A Qt plugin that reports on standard output when a program has started: when its event loop runs
// or, where DRIFTMARK_PROBE is "drawing", when one of its windows has been drawn.

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
      report();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint && watched->isWidgetType()) {
      QCoreApplication::instance()->removeEventFilter(this);
      report();
    }
    return false;
  }

private:
  /// In the next turn of the event loop.
  void report() {
    QTimer::singleShot(0, this, [] {
      const char byte = '\n';
      [[maybe_unused]] const ssize_t count = write(STDOUT_FILENO, &byte, 1);
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
