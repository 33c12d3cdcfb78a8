#pragma once

#include <QLabel>
#include <QTextDocument>

namespace driftmark {

/// A label that breaks a plain text into lines of its width: between words, and inside a word that
/// is wider than a line, such as a path. Nothing is left out. The text is laid out once for each
/// width, however often it is painted.
class WrappingLabel final : public QLabel {
public:
  explicit WrappingLabel(const QString& text);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  mutable QTextDocument document_; ///< laid out for the width that was asked for last
};

} // namespace driftmark
