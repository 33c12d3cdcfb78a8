// Which folders and files an invented drive has.

#include "DriveTree.h"

#include <array>

namespace driftmark::bench {
namespace {

constexpr std::size_t minDepth = 3;
constexpr std::size_t maxDepth = 8;

/// How often a new folder is of depth 1, 2, ... 8.
constexpr std::array<std::size_t, maxDepth> depthWeights{1, 8, 60, 190, 260, 220, 140, 80};

/// How many files a folder holds: many hold few, a few hold many.
constexpr std::array<std::size_t, 16> folderSizes{1, 1, 2,  2,  3,  4,  5,  6,
                                                  7, 9, 12, 15, 20, 30, 50, 110};

constexpr std::array<std::string_view, 48> folderWords{"Documents",
                                                       "Projects",
                                                       "Archive",
                                                       "Invoices",
                                                       "Rechnungen",
                                                       "Clients",
                                                       "Meeting Notes",
                                                       "Photos",
                                                       "Vacances d'été",
                                                       "Fotos 📷",
                                                       "Übersetzungen",
                                                       "Taxes",
                                                       "Design",
                                                       "Exports",
                                                       "Drafts",
                                                       "Scans",
                                                       "Receipts",
                                                       "Presentations",
                                                       "Präsentationen",
                                                       "Music",
                                                       "Recordings",
                                                       "Reports",
                                                       "src",
                                                       "assets",
                                                       "Library",
                                                       "Research",
                                                       "Thesis",
                                                       "Reise nach Zürich",
                                                       "Familie",
                                                       "Señales",
                                                       "Contracts",
                                                       "Old Backups",
                                                       "Templates",
                                                       "Screenshots",
                                                       "Spring Term",
                                                       "Course Material",
                                                       "Letters",
                                                       "Bewerbungen",
                                                       "日本語の資料",
                                                       "Работа",
                                                       "Cafe\u0301 Menus",
                                                       "Maison 🏡",
                                                       "Shared with Family",
                                                       "Final Versions",
                                                       "Interviews",
                                                       "Datasets",
                                                       "Wedding",
                                                       "Website Relaunch"};

constexpr std::array<std::string_view, 40> fileWords{
    "Budget",   "Proposal",  "Summary",    "Agenda",     "Minutes",  "Contract", "Offer",
    "Analysis", "Überblick", "Résumé",     "Plan",       "Review",   "Sketch",   "Letter",
    "Schedule", "Checklist", "Estimate",   "Manuscript", "Chapter",  "Appendix", "Release Notes",
    "Roadmap",  "Interview", "Transcript", "Protokoll",  "Angebot",  "Facture",  "Recipe",
    "Travel",   "Insurance", "Statement",  "Timetable",  "Lecture",  "Exercise", "Solution",
    "Survey",   "Poster",    "Logo",       "Mockup",     "Inventory"};

constexpr std::array<std::string_view, 12> documentExtensions{
    "pdf", "docx", "pages", "xlsx", "numbers", "key", "txt", "md", "rtf", "csv", "pptx", "html"};
constexpr std::array<std::string_view, 6> sourceExtensions{"ts", "swift", "cpp",
                                                           "h",  "json",  "yml"};
constexpr std::array<std::string_view, 4> emoji{"🎂 ", "✅ ", "📌 ", "🏔️ "};

/// `number` with zeros before it up to `width` digits.
std::string padded(std::size_t number, std::size_t width) {
  std::string digits = std::to_string(number);
  if (digits.size() < width)
    digits.insert(0, width - digits.size(), '0');
  return digits;
}

} // namespace

std::string_view DriveTree::nextPath() {
  if (filesLeft_ == 0)
    enterNextFolder();
  --filesLeft_;
  path_.resize(levels_.back().end);
  path_ += '/';
  path_ += fileName();
  return path_;
}

void DriveTree::enterNextFolder() {
  std::size_t total = 0;
  for (const std::size_t weight : depthWeights)
    total += weight;
  std::size_t choice = random_.below(total);
  std::size_t depth = 1;
  while (choice >= depthWeights[depth - 1]) {
    choice -= depthWeights[depth - 1];
    ++depth;
  }

  if (depth < levels_.size())
    levels_.resize(depth);
  do
    descend();
  while (levels_.size() <= minDepth);

  ++folders_;
  names_.clear();
  filesLeft_ = random_.pick(folderSizes);
  style_ = random_.below(10);
  number_ = random_.below(8000);
}

void DriveTree::descend() {
  Level& parent = levels_.back();
  std::string name = folderName();
  if (const std::string first = name; !parent.subfolders.insert(name).second) {
    std::size_t copy = 2;
    do
      name = first + ' ' + std::to_string(copy++);
    while (!parent.subfolders.insert(name).second);
  }
  path_.resize(parent.end);
  path_ += '/';
  path_ += name;
  levels_.push_back(Level{path_.size(), {}});
}

std::string DriveTree::folderName() {
  const std::string_view word = random_.pick(folderWords);
  std::string name;
  switch (random_.below(5)) {
  case 0:
    name += word;
    name += ' ' + std::to_string(2004 + random_.below(21));
    return name;
  case 1:
    name += std::to_string(2010 + random_.below(15));
    name += '-' + padded(1 + random_.below(12), 2) + ' ';
    name += word;
    return name;
  default:
    name += word;
    return name;
  }
}

std::string DriveTree::date() {
  std::string text = std::to_string(2010 + random_.below(15));
  text += '-' + padded(1 + random_.below(12), 2);
  text += '-' + padded(1 + random_.below(28), 2);
  return text;
}

std::string DriveTree::fileName() {
  std::string stem;
  std::string extension;
  ++number_;
  switch (style_) {
  case 0:
  case 1:
    return "IMG_" + padded(number_, 4) + ".HEIC";
  case 2:
    return "DSC" + padded(number_, 5) + ".JPG";
  case 3:
    stem = "Screenshot " + date() + " at ";
    stem += padded(random_.below(24), 2);
    stem += '.' + padded(random_.below(60), 2);
    stem += '.' + padded(random_.below(60), 2);
    extension = "png";
    break;
  case 4:
    stem += random_.pick(fileWords);
    stem += '_';
    stem += random_.pick(fileWords);
    extension = random_.pick(sourceExtensions);
    break;
  case 5:
    stem = padded(1 + names_.size(), 2) + ' ';
    stem += random_.pick(fileWords);
    extension = "m4a";
    break;
  default:
    if (random_.happens(1, 60))
      stem += random_.pick(emoji);
    stem += random_.pick(fileWords);
    if (random_.happens(2, 3)) {
      stem += ' ';
      stem += random_.pick(fileWords);
    }
    if (random_.happens(1, 2))
      stem += ' ' + date();
    extension = random_.pick(documentExtensions);
  }

  extension.insert(0, 1, '.');
  std::string name = stem + extension;
  for (std::size_t copy = 2; !names_.insert(name).second; ++copy) {
    name = stem;
    name += ' ';
    name += std::to_string(copy);
    name += extension;
  }
  return name;
}

} // namespace driftmark::bench
