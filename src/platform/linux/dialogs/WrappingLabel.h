#pragma once

#include <QLabel>

class QTextDocument;

namespace driftmark {

/// A label that breaks a plain text into lines of its width: between words, and inside a word that
/// is wider than a line, such as a path. Nothing is left out.
class WrappingLabel final : public QLabel {
public:
  explicit WrappingLabel(const QString& text);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  void layOut(QTextDocument& document, int width) const;
};

} // namespace driftmark
