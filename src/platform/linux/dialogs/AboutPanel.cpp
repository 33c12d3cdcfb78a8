// How the about panel looks, and which texts of the bundle it shows.

#include "platform/linux/dialogs/IconView.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/looks/Look.h"

#include <QDialog>
#include <QLabel>
#include <QVBoxLayout>

namespace driftmark {

namespace {

// In points.
constexpr qreal iconSize = 96;
constexpr qreal nameSize = 17;
constexpr qreal smallSize = 11;
constexpr qreal sideMargin = 36;
constexpr qreal endMargin = 24;
constexpr qreal gap = 10;

QLabel* label(QWidget& parent, const char* objectName, const QFont& font) {
  auto* const label = new QLabel(&parent);
  label->setObjectName(QLatin1String(objectName));
  label->setFont(font);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setAlignment(Qt::AlignCenter);
  return label;
}

} // namespace

class AboutWindow final : public QDialog {
public:
  AboutWindow() : QDialog(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
    setObjectName(QStringLiteral("AboutPanel"));
    setWindowIcon(applicationIcon());
    setAttribute(Qt::WA_QuitOnClose, false);
    const Look look(palette(), font());
    const QFont small = look.font(smallSize);
    name_ = label(*this, "name", look.font(nameSize, QFont::Bold));
    version_ = label(*this, "version", font());
    credits_ = label(*this, "credits", small);
    copyright_ = label(*this, "copyright", small);

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(look.length(sideMargin), look.length(endMargin),
                               look.length(sideMargin), look.length(endMargin));
    layout->setSpacing(look.length(gap));
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(new IconView(look.length(iconSize), this), 0, Qt::AlignHCenter);
    for (QLabel* const text : {name_, version_, credits_, copyright_})
      layout->addWidget(text);
  }

  void setTexts(const QString& name, const QString& version, const QString& copyright,
                const QString& credits) {
    setWindowTitle(QStringLiteral("About %1").arg(name));
    const Look look(palette(), font());
    set(*name_, name, look.ink());
    set(*version_, version.isEmpty() ? QString() : QStringLiteral("Version %1").arg(version),
        look.detail());
    set(*credits_, credits, look.detail());
    set(*copyright_, copyright, look.detail());
  }

private:
  static void set(QLabel& label, const QString& text, const QColor& colour) {
    QPalette palette;
    palette.setColor(QPalette::WindowText, colour);
    label.setPalette(palette);
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
