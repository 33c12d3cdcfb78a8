#pragma once

#include "ports/Dialogs.h"

#include <cstddef>

#include <QDialog>

class QVBoxLayout;

namespace driftmark {

/// The window of an alert: the message in bold, the informative text below it, and the buttons in
/// their order from left to right. A text that is too tall for the screen can be scrolled. The
/// texts are named `messageText` and `informativeText`, the buttons `button0`, `button1` and so on.
class AlertDialog final : public QDialog {
public:
  explicit AlertDialog(const Alert& alert);

  /// Shows the alert until it is answered or closed. The index of the chosen button;
  /// `Dialogs::unanswered` when the application's end came first.
  std::size_t run();

protected:
  void showEvent(QShowEvent* event) override;

private:
  int addButtons(QVBoxLayout& column, const Alert& alert);
  void addTexts(QVBoxLayout& column, const Alert& alert, int width);

  std::size_t chosen_ = Dialogs::unanswered;
};

} // namespace driftmark
