// Which menus the gallery draws.

#include "SampleMenus.h"

#include <utility>

namespace driftmark::gallery {

namespace {

MenuItem separator() {
  MenuItem item;
  item.kind = MenuItem::Kind::separator;
  return item;
}

MenuItem label(std::string title) {
  MenuItem item;
  item.kind = MenuItem::Kind::label;
  item.title = std::move(title);
  return item;
}

MenuItem heading(std::string title) {
  MenuItem item = label(std::move(title));
  item.kind = MenuItem::Kind::heading;
  return item;
}

MenuItem command(std::string title, std::string keyEquivalent = {}) {
  MenuItem item;
  item.title = std::move(title);
  item.keyEquivalent = std::move(keyEquivalent);
  item.action = [] {};
  return item;
}

MenuItem named(const std::string& name, const std::string& detail) {
  MenuItem item = command(name + "  —  " + detail);
  item.nameLength = name.size();
  return item;
}

MenuItem file(const std::string& name, const std::string& symbol, const std::string& detail) {
  MenuItem item = named(name, detail);
  item.symbol = {symbol, detail};
  item.toolTip = "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs/" + name;
  return item;
}

Menu withFixedItems(Menu menu, const std::string& storage, bool launchesAtLogin) {
  menu.insert(menu.end(), {separator(), label(storage), separator(),
                           command("Open iCloud Drive", "o"), command("Free Up Space…"),
                           separator(), command("About Driftmark"), command("Check for Updates…"),
                           command("Launch at Login"), command("Quit Driftmark", "q")});
  menu[menu.size() - 2].isChecked = launchesAtLogin;
  return menu;
}

Menu idle() {
  return withFixedItems({label("iCloud Drive: Up to Date"), separator(), heading("Recent Activity"),
                         file("Minutes 2026-03.pages", "checkmark.circle", "2 minutes ago"),
                         file("Holiday", "icloud.slash", "removed download 3 hours ago"),
                         file("Budget.numbers", "checkmark.circle", "1 day ago")},
                        "214.75 GB available in iCloud", true);
}

Menu transferring() {
  MenuItem restart = named("Restart iCloud Sync…", "no progress for 7 min");
  restart.symbol = {"arrow.clockwise.icloud", "Restart iCloud Sync"};
  return withFixedItems(
      {label("iCloud Drive: Syncing…"), separator(),
       file("Concert.mov", "arrow.up.circle", "uploading 42%"),
       file("IMG_2041.heic", "arrow.down.circle", "downloading 9%"),
       file("Thesis.pdf", "arrow.up.circle", "uploading"),
       file("Lecture 12 – The long history of the metric system.key", "arrow.down.circle",
            "downloading 91%"),
       file("Archive.zip", "exclamationmark.circle", "stalled · downloading 100%"), restart},
      "Checking iCloud storage…", false);
}

Menu withIssues() {
  return withFixedItems(
      {label("iCloud Drive: Attention Needed"), separator(), label("2 downloading · 1 uploading"),
       file("Photos", "folder", "syncing"), file("Work", "folder", "syncing"), separator(),
       heading("Sync Issues"),
       file("Lectures.key", "exclamationmark.triangle",
            "The item could not be uploaded because the storage is full."),
       file("notes: draft.txt", "exclamationmark.triangle", "The name is not allowed.")},
      "Zero KB available in iCloud", false);
}

Menu hardToDraw() {
  return withFixedItems(
      {label("iCloud Drive: Downloading…"), separator(),
       file("R&D && more.txt", "arrow.down.circle", "downloading 5%"),
       file("שלום עולם", "arrow.down.circle", "5 minutes ago"),
       file("تقرير ٢٠٢٦.pdf", "checkmark.circle", "12 seconds ago"),
       file("line\nbreak\tand tab", "checkmark.circle", "1 hour ago"),
       file("  two  spaces  ", "checkmark.circle", "1 hour ago"),
       file("\u202Etxt.exe", "checkmark.circle", "2 hours ago"),
       file("<b>bold</b> &amp; plain", "checkmark.circle", "3 hours ago"),
       file("The complete minutes of every meeting that was held in the long year of 2026.pages",
            "icloud.slash", "removed download 2 weeks ago"),
       file("Café à Zürich – naïve “résumé”.docx", "checkmark.circle", "1 month ago")},
      "1.5 TB available in iCloud", true);
}

} // namespace

std::vector<SampleMenu> sampleMenus() {
  return {{"idle", idle()},
          {"transferring", transferring()},
          {"issues", withIssues()},
          {"hard", hardToDraw()}};
}

} // namespace driftmark::gallery
