// How the about panel looks, and which texts of the bundle it shows.

#include "platform/linux/dialogs/LinuxDialogs.h"

#include <QDialog>
#include <QFontInfo>
#include <QLabel>
#include <QPainter>
#include <QSvgRenderer>
#include <QVBoxLayout>

namespace driftmark {

namespace {

constexpr int iconSize = 96;

/// The application's icon, sharp in every resolution.
class IconView final : public QWidget {
public:
  explicit IconView(QWidget* parent)
      : QWidget(parent), icon_(QStringLiteral(":/driftmark/icon.svg")) {
    setFixedSize(iconSize, iconSize);
  }

protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    icon_.render(&painter, rect());
  }

private:
  QSvgRenderer icon_;
};

QLabel* label(QWidget& parent, const char* objectName, const QFont& font) {
  auto* const label = new QLabel(&parent);
  label->setObjectName(QLatin1String(objectName));
  label->setFont(font);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setAlignment(Qt::AlignCenter);
  return label;
}

QFont scaled(QFont font, double factor) {
  font.setPointSizeF(QFontInfo(font).pointSizeF() * factor);
  return font;
}

QFont bold(QFont font) {
  font.setBold(true);
  return font;
}

} // namespace

class AboutWindow final : public QDialog {
public:
  AboutWindow() : QDialog(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
    setObjectName(QStringLiteral("AboutPanel"));
    setAttribute(Qt::WA_QuitOnClose, false);
    const QFont small = scaled(font(), 0.85);
    name_ = label(*this, "name", bold(scaled(font(), 1.4)));
    version_ = label(*this, "version", font());
    credits_ = label(*this, "credits", small);
    copyright_ = label(*this, "copyright", small);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(36, 24, 36, 24);
    layout->setSpacing(12);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(new IconView(this), 0, Qt::AlignHCenter);
    for (QLabel* const text : {name_, version_, credits_, copyright_})
      layout->addWidget(text);
  }

  void setTexts(const QString& name, const QString& version, const QString& copyright,
                const QString& credits) {
    setWindowTitle(QStringLiteral("About %1").arg(name));
    set(*name_, name);
    set(*version_, version.isEmpty() ? QString() : QStringLiteral("Version %1").arg(version));
    set(*credits_, credits);
    set(*copyright_, copyright);
  }

private:
  static void set(QLabel& label, const QString& text) {
    label.setText(text);
    label.setVisible(!text.isEmpty());
  }

  QLabel* name_;
  QLabel* version_;
  QLabel* credits_;
  QLabel* copyright_;
};

AboutPanel::AboutPanel() = default;
AboutPanel::~AboutPanel() = default;

void AboutPanel::showAboutPanel(const std::string& name, const std::string& version,
                                const std::string& copyright, const std::string& credits) {
  if (!window_)
    window_ = std::make_unique<AboutWindow>();
  window_->setTexts(QString::fromStdString(name), QString::fromStdString(version),
                    QString::fromStdString(copyright), QString::fromStdString(credits));
  window_->show();
  window_->raise();
  window_->activateWindow();
}

void LinuxDialogs::orderFrontAboutPanel(const std::string& credits) {
  aboutPanel_.showAboutPanel(bundle_.information("CFBundleName").value_or("Driftmark"),
                             bundle_.information("CFBundleShortVersionString").value_or(""),
                             bundle_.information("NSHumanReadableCopyright").value_or(""), credits);
}

} // namespace driftmark
