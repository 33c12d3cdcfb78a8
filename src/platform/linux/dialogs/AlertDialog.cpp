#include "platform/linux/dialogs/AlertDialog.h"

#include "platform/linux/menubar/WrappedText.h"

#include <algorithm>
#include <memory>

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
constexpr int narrowestButton = 80;
constexpr int lowestButton = 28;
constexpr int paddingInButton = 8;
constexpr int charactersInLine = 62;

/// The title as it is, without a letter of it becoming a short cut.
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

} // namespace

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
  const int widestLine = screen()->availableSize().width() - 2 * margin;
  const int width = std::min(fontMetrics().averageCharWidth() * charactersInLine, widestLine);
  addTexts(*column, alert, std::max(width, addButtons(*buttons, alert)));
  column->addSpacing(gapAboveButtons);
  column->addLayout(buttons.release());
}

/// Returns how wide the row of buttons is.
int AlertDialog::addButtons(QVBoxLayout& column, const Alert& alert) {
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
    button->setMinimumSize(std::max(narrowestButton, needed.width() + 2 * paddingInButton),
                           std::max(lowestButton, needed.height()));
    button->setDefault(index == 0);
    connect(button, &QPushButton::clicked, this, [this, index] {
      chosen_ = index;
      accept();
    });
    row->addWidget(button);
    if (index == 0)
      button->setFocus();
  }
  return row->sizeHint().width();
}

void AlertDialog::addTexts(QVBoxLayout& column, const Alert& alert, int width) {
  auto* const message = new WrappedText(QString::fromStdString(alert.messageText));
  message->setObjectName("messageText");
  QFont bold = message->font();
  bold.setBold(true);
  message->setFont(bold);
  message->setFixedSize(width, message->heightForWidth(width));
  column.addWidget(message);
  if (alert.informativeText.empty())
    return;

  column.addSpacing(gapBetweenTexts);
  auto text = std::make_unique<WrappedText>(QString::fromStdString(alert.informativeText));
  text->setObjectName("informativeText");
  const int height = text->heightForWidth(width);
  const int tallest = screen()->availableSize().height() / 2;
  if (height <= tallest) {
    text->setFixedSize(width, height);
    column.addWidget(text.release());
  } else {
    auto* const area = scrollable(std::move(text)).release();
    area->setFixedSize(width, tallest);
    column.addWidget(area);
  }
}

std::size_t AlertDialog::run() {
  exec();
  return chosen_;
}

/// A program without other windows is not in front by itself.
void AlertDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  raise();
  activateWindow();
}

} // namespace driftmark
