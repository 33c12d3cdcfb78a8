#pragma once

#include "ports/Menu.h"

#include <QAction>
#include <QFontMetricsF>
#include <QString>

namespace driftmark {

/// A row of a menu. Its data() is the item's title, its text() what is drawn, its whatsThis() the
/// item's tool tip, which toolTip() replaces by the text when it is empty. Main thread only.
class MenuRow final : public QAction {
public:
  MenuRow(const MenuItem& item, QObject* parent);

  /// Replaces the title by one without a detail.
  void setTitle(const QString& title);

  /// Shortens what is drawn to that width, if possible: the name, but no further than to
  /// `minNameWidth`, and only then the detail.
  void fit(const QFontMetricsF& metrics, qreal width, qreal minNameWidth);

  /// The width of the title with a name of at most `minNameWidth`.
  qreal neededWidth(const QFontMetricsF& metrics, qreal minNameWidth) const;

  const QString& name() const { return name_; }     ///< as drawn
  const QString& detail() const { return detail_; } ///< as drawn
  qreal nameWidth() const { return nameWidth_; }
  qreal width() const { return nameWidth_ + detailWidth_; } ///< of the drawn title
  bool isElided() const { return isElided_; }               ///< whether a part is left out

  bool isHeading() const { return isHeading_; }

  /// The name of the symbol before the title; empty for none.
  const std::string& symbol() const { return symbol_; }

private:
  QString wholeName() const { return data().toString().first(nameLength_); }
  QString wholeDetail() const { return data().toString().sliced(nameLength_); }

  const bool isHeading_;
  const std::string symbol_;
  qsizetype nameLength_ = 0; ///< of data()
  QString name_;
  QString detail_;
  qreal nameWidth_ = 0;
  qreal detailWidth_ = 0;
  bool isElided_ = false;
};

} // namespace driftmark
