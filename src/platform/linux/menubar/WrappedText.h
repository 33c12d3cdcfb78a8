#pragma once

#include <QLabel>

class QTextDocument;

namespace driftmark {

/// A plain text in lines no wider than the label: broken between words, and within a word that is
/// wider than a line, such as a path.
class WrappedText final : public QLabel {
public:
  explicit WrappedText(const QString& text);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  void lay(QTextDocument& document, int width) const;
};

} // namespace driftmark
