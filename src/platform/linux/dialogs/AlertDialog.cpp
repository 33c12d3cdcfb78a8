// How an alert looks, and how it is answered.

#include "platform/linux/dialogs/IconView.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/dialogs/WrappingLabel.h"
#include "platform/linux/looks/Look.h"
#include "support/DisplayedText.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

namespace driftmark {

namespace {

// In points.
constexpr qreal usualWidth = 420;
constexpr qreal margin = 20;
constexpr qreal iconSize = 64;
constexpr qreal gapAfterIcon = 16;
constexpr qreal messageSize = 13;
constexpr qreal informationSize = 12;
constexpr qreal gapBetweenTexts = 6;
constexpr qreal gapAboveButtons = 20;
constexpr qreal gapBetweenButtons = 8;
constexpr qreal minButtonWidth = 90;
constexpr qreal minButtonHeight = 28;
constexpr qreal buttonPadding = 8;
constexpr double maxPartOfScreen = 0.8; ///< of its height

/// Escapes the character that would make the next one a shortcut.
QString label(const std::string& title) {
  return QString::fromStdString(title).replace('&', "&&");
}

std::unique_ptr<QScrollArea> scrollable(std::unique_ptr<QWidget> text) {
  auto area = std::make_unique<QScrollArea>();
  area->setFrameShape(QFrame::NoFrame);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setWidgetResizable(true);
  area->viewport()->setAutoFillBackground(false);
  text->setAutoFillBackground(false);
  area->setWidget(text.release());
  return area;
}

/// The window of an alert: the application's icon, the message in bold beside it, the informative
/// text below that, and the buttons in the desktop's order. A text that is too tall for the screen
/// scrolls, so that the buttons are always visible. Object names: `messageText`, `informativeText`,
/// `button0`, `button1` and so on, in the order of the alert.
class AlertDialog final : public QDialog {
public:
  explicit AlertDialog(const Alert& alert);

  /// Shows the alert until it is answered or closed. Returns the index of the chosen button, or
  /// No value when the application ended first.
  std::optional<std::size_t> run();

protected:
  void showEvent(QShowEvent* event) override;

private:
  QDialogButtonBox* makeButtons(const Alert& alert);
  void addTexts(QVBoxLayout& column, const Alert& alert, int width, int maxHeight) const;

  const Look look_;
  std::optional<std::size_t> chosen_;
};

AlertDialog::AlertDialog(const Alert& alert)
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      look_(palette(), font()) {
  setObjectName("alert");
  setWindowTitle("Driftmark");
  setWindowIcon(applicationIcon());
  setLayoutDirection(Qt::LeftToRight);
  setModal(true);

  auto* const column = new QVBoxLayout(this);
  const int border = look_.length(margin);
  const int aboveButtons = look_.length(gapAboveButtons);
  column->setContentsMargins(border, border, border, border);
  column->setSpacing(0);
  column->setSizeConstraint(QLayout::SetFixedSize);
  auto* const top = new QHBoxLayout;
  column->addLayout(top);
  column->addSpacing(aboveButtons);
  auto* const buttons = makeButtons(alert);
  column->addWidget(buttons);

  auto* const icon = new IconView(look_.length(iconSize), this);
  top->setSpacing(look_.length(gapAfterIcon));
  top->addWidget(icon, 0, Qt::AlignTop);
  auto* const texts = new QVBoxLayout;
  texts->setSpacing(look_.length(gapBetweenTexts));
  top->addLayout(texts);
  const QSize available = screen()->availableSize();
  const int width = std::max(std::min(look_.length(usualWidth), available.width()) - 2 * border,
                             buttons->sizeHint().width());
  addTexts(*texts, alert, width - icon->width() - top->spacing(),
           static_cast<int>(maxPartOfScreen * available.height()) - 2 * border - aboveButtons -
               buttons->sizeHint().height());
  texts->addStretch();
}

QDialogButtonBox* AlertDialog::makeButtons(const Alert& alert) {
  std::vector<std::string> titles = alert.buttons;
  if (titles.empty())
    titles.emplace_back("OK");
  const std::size_t last = titles.size() - 1;
  connect(this, &QDialog::rejected, this, [this, last] { chosen_ = last; });

  auto* const box = new QDialogButtonBox(this);
  box->layout()->setSpacing(look_.length(gapBetweenButtons));
  for (std::size_t index = 0; index <= last; ++index) {
    const auto role =
        index > 0 && index == last ? QDialogButtonBox::RejectRole : QDialogButtonBox::AcceptRole;
    QPushButton* const button = box->addButton(label(titles[index]), role);
    button->setObjectName(QString("button%1").arg(index));
    const QSize needed = button->sizeHint();
    button->setMinimumSize(
        std::max(look_.length(minButtonWidth), needed.width() + 2 * look_.length(buttonPadding)),
        std::max(look_.length(minButtonHeight), needed.height()));
    button->setDefault(index == 0);
    connect(button, &QPushButton::clicked, this, [this, index] {
      chosen_ = index;
      accept();
    });
    if (index == 0)
      button->setFocus();
  }
  return box;
}

void AlertDialog::addTexts(QVBoxLayout& column, const Alert& alert, int width,
                           int maxHeight) const {
  auto* const message = new WrappingLabel(QString::fromStdString(
      displayedText(alert.messageText, LineBreaks::becomeSpaces, Alert::maxDisplayedMessage)));
  message->setObjectName("messageText");
  message->setFont(look_.font(messageSize, QFont::Bold));
  const int messageHeight = std::min(message->heightForWidth(width), maxHeight / 2);
  message->setFixedSize(width, messageHeight);
  column.addWidget(message);
  if (alert.informativeText.empty())
    return;

  auto text = std::make_unique<WrappingLabel>(QString::fromStdString(alert.informativeText));
  text->setObjectName("informativeText");
  text->setFont(look_.font(informationSize));
  const int height = text->heightForWidth(width);
  const int heightLeft = maxHeight - messageHeight - column.spacing();
  if (height <= heightLeft) {
    text->setFixedSize(width, height);
    column.addWidget(text.release());
  } else {
    auto* const area = scrollable(std::move(text)).release();
    area->setFixedSize(width, heightLeft);
    column.addWidget(area);
  }
}

std::optional<std::size_t> AlertDialog::run() {
  exec();
  return chosen_;
}

/// Without other windows the program is not in front, so the alert would not be either.
void AlertDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  raise();
  activateWindow();
}

} // namespace

std::optional<std::size_t> LinuxDialogs::runModal(const Alert& alert) {
  return AlertDialog(alert).run();
}

} // namespace driftmark
