// How the status item opens and closes its menu.

#include "platform/linux/menubar/LinuxStatusItem.h"

#include <utility>

namespace driftmark {

LinuxStatusItem::LinuxStatusItem() : strip_(images_, [this] { toggleMenu(); }) {
  strip_.show();
}

LinuxStatusItem::~LinuxStatusItem() = default;

void LinuxStatusItem::setSymbol(const Symbol& symbol, const std::string& fallback) {
  const std::string& name = SymbolImages::has(symbol.name) ? symbol.name : fallback;
  strip_.setSymbol(name, QString::fromStdString(symbol.description));
}

void LinuxStatusItem::setToolTip(const std::string& text) {
  const QString toolTip = QString::fromStdString(text);
  if (toolTip != strip_.toolTip())
    strip_.setToolTip(toolTip);
}

void LinuxStatusItem::setMenu(std::function<Menu()> build, std::function<void()> willOpen) {
  build_ = std::move(build);
  willOpen_ = std::move(willOpen);
}

void LinuxStatusItem::retitle(MenuItem::Tag tag, const std::string& title) {
  if (menu_)
    menu_->retitle(tag, title);
}

void LinuxStatusItem::toggleMenu() {
  if (menu_ && menu_->isVisible()) {
    menu_->close();
    return;
  }
  if (!build_)
    return;
  menu_ = std::make_unique<DropDownMenu>(build_(), images_, strip_);
  willOpen_();
  QObject::connect(menu_.get(), &QMenu::aboutToHide, &strip_, [this] {
    strip_.setHighlighted(false);
    strip_.giveFocusBack();
  });
  strip_.setHighlighted(true);
  menu_->open();
}

} // namespace driftmark
