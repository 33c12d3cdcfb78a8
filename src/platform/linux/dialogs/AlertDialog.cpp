// How an alert looks, and how it is answered.

#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/dialogs/WrappingLabel.h"
#include "support/DisplayedText.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

namespace driftmark {

namespace {

constexpr int margin = 20;
constexpr int gapBetweenTexts = 8;
constexpr int gapAboveButtons = 20;
constexpr int gapBetweenButtons = 8;
constexpr int minButtonWidth = 80;
constexpr int minButtonHeight = 28;
constexpr int buttonPadding = 8;
constexpr int charactersPerLine = 62;
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

/// The window of an alert: the message in bold, the informative text below it, and the buttons in
/// order from left to right. A text that is too tall for the screen scrolls, so that the buttons
/// are always visible. Object names: `messageText`, `informativeText`, `button0`, `button1` and so
/// on.
class AlertDialog final : public QDialog {
public:
  explicit AlertDialog(const Alert& alert);

  /// Shows the alert until it is answered or closed. Returns the index of the chosen button, or
  /// No value when the application ended first.
  std::optional<std::size_t> run();

protected:
  void showEvent(QShowEvent* event) override;

private:
  QSize addButtons(QVBoxLayout& column, const Alert& alert);
  static void addTexts(QVBoxLayout& column, const Alert& alert, int width, int maxHeight);

  std::optional<std::size_t> chosen_;
};

AlertDialog::AlertDialog(const Alert& alert) {
  setObjectName("alert");
  setWindowTitle("Driftmark");
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  setLayoutDirection(Qt::LeftToRight);
  setModal(true);

  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(margin, margin, margin, margin);
  column->setSpacing(0);
  column->setSizeConstraint(QLayout::SetFixedSize);
  auto buttons = std::make_unique<QVBoxLayout>();
  const QSize available = screen()->availableSize();
  const int width = std::min(fontMetrics().averageCharWidth() * charactersPerLine,
                             available.width() - 2 * margin);
  const QSize row = addButtons(*buttons, alert);
  const int maxHeight = static_cast<int>(maxPartOfScreen * available.height());
  addTexts(*column, alert, std::max(width, row.width()),
           maxHeight - 2 * margin - gapAboveButtons - row.height());
  column->addSpacing(gapAboveButtons);
  column->addLayout(buttons.release());
}

/// Returns the size of the row of buttons.
QSize AlertDialog::addButtons(QVBoxLayout& column, const Alert& alert) {
  std::vector<std::string> titles = alert.buttons;
  if (titles.empty())
    titles.emplace_back("OK");
  connect(this, &QDialog::rejected, this, [this, last = titles.size() - 1] { chosen_ = last; });

  auto* const row = new QHBoxLayout;
  column.addLayout(row);
  row->setSpacing(gapBetweenButtons);
  row->addStretch();
  for (std::size_t index = 0; index < titles.size(); ++index) {
    auto* const button = new QPushButton(label(titles[index]), this);
    button->setObjectName(QString("button%1").arg(index));
    const QSize needed = button->sizeHint();
    button->setMinimumSize(std::max(minButtonWidth, needed.width() + 2 * buttonPadding),
                           std::max(minButtonHeight, needed.height()));
    button->setDefault(index == 0);
    connect(button, &QPushButton::clicked, this, [this, index] {
      chosen_ = index;
      accept();
    });
    row->addWidget(button);
    if (index == 0)
      button->setFocus();
  }
  return row->sizeHint();
}

void AlertDialog::addTexts(QVBoxLayout& column, const Alert& alert, int width, int maxHeight) {
  auto* const message = new WrappingLabel(QString::fromStdString(
      displayedText(alert.messageText, LineBreaks::becomeSpaces, Alert::maxDisplayedMessage)));
  message->setObjectName("messageText");
  QFont bold = message->font();
  bold.setBold(true);
  message->setFont(bold);
  const int messageHeight = std::min(message->heightForWidth(width), maxHeight / 2);
  message->setFixedSize(width, messageHeight);
  column.addWidget(message);
  if (alert.informativeText.empty())
    return;

  column.addSpacing(gapBetweenTexts);
  auto text = std::make_unique<WrappingLabel>(QString::fromStdString(alert.informativeText));
  text->setObjectName("informativeText");
  const int height = text->heightForWidth(width);
  const int heightLeft = maxHeight - messageHeight - gapBetweenTexts;
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
