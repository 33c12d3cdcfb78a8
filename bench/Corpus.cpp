// What the invented output of the per-item monitor looks like.

#include "Corpus.h"

#include "DriveTree.h"
#include "Random.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace driftmark::bench {
namespace {

constexpr std::uint64_t corpusSeed = 20240229;
constexpr std::size_t activePaths = 200;
constexpr std::size_t invalidLines = 12;

constexpr std::array<std::string_view, 4> invalidBytes{"\xff", "\xc3(", "\xed\xa0\x80", "\xc0\xaf"};

/// The text behind the path on a state line: mostly in sync, a quarter not downloaded, few issues.
std::string_view state(Random& random) {
  const std::size_t chance = random.below(20000);
  if (chance < 13000)
    return " ☁";
  if (chance < 18000)
    return " ☁ not downloaded";
  if (chance < 19990)
    return "";
  if (chance < 19997)
    return " ☁ waiting";
  return chance == 19997 ? " ☁ Upload Error 28" : " ☁ conflict";
}

/// A file in transfer.
struct Transfer {
  std::string path;
  bool upload = false;
  std::size_t tenths = 0; ///< of a percent
};

/// Writes the lines of a corpus.
class Writer {
public:
  explicit Writer(std::size_t lines) : lines_(lines), random_(corpusSeed), drive_(corpusSeed + 1) {
    corpus_.bytes.reserve(lines * 120);
    DriveTree elsewhere(corpusSeed + 2);
    for (std::size_t i = 0; i < activePaths; ++i) {
      std::string path(elsewhere.nextPath());
      path.insert(path.rfind('/') + 1, '(' + std::to_string(i) + ") ");
      transfers_.push_back(Transfer{std::move(path), random_.happens(1, 2), 0});
    }
  }

  Corpus write() {
    std::size_t states = lines_ * 7 / 10;
    std::size_t progress = lines_ * 2 / 10;
    std::size_t noise = lines_ - states - progress;
    const std::size_t noisePerInvalid = noise / invalidLines;
    while (corpus_.lines < lines_) {
      const std::size_t choice = random_.below(states + progress + noise);
      if (choice < states) {
        --states;
        stateLine();
      } else if (choice < states + progress) {
        --progress;
        progressLine("", "");
      } else if (--noise % noisePerInvalid == 0 && noise / noisePerInvalid < invalidLines) {
        invalidLine(noise / noisePerInvalid);
      } else {
        noiseLine();
      }
    }
    corpus_.folders = drive_.folders();
    return std::move(corpus_);
  }

private:
  void line(std::initializer_list<std::string_view> parts) {
    for (const std::string_view part : parts)
      corpus_.bytes += part;
    corpus_.bytes += "\r\n";
    ++corpus_.lines;
  }

  void stateLine() {
    // Now and then a transfer finishes.
    std::string_view path;
    if (finished_ < activePaths && random_.happens(activePaths, lines_)) {
      path = transfers_[finished_++].path;
    } else {
      path = drive_.nextPath();
      last_ = path;
    }
    ++corpus_.paths;
    corpus_.pathBytes += path.size();
    line({" o ", path, state(random_)});
  }

  void progressLine(std::string_view before, std::string_view after) {
    Transfer& transfer = transfers_[random_.below(transfers_.size())];
    transfer.tenths = (transfer.tenths + random_.below(12)) % 1000;
    const std::string_view arrow = transfer.upload ? " ↑" : " ☁ ↓";
    std::string percent = " ";
    if (!random_.happens(1, 10)) {
      percent += std::to_string(transfer.tenths / 10);
      if (random_.happens(1, 2))
        percent += '.' + std::to_string(transfer.tenths % 10);
      percent += '%';
    } else if (!transfer.upload) {
      percent.clear();
    }
    line({before, " o ", transfer.path, arrow, percent, after});
  }

  void noiseLine() {
    switch (random_.below(12)) {
    case 0:
      return line({});
    case 1:
      return line({"----------------------------------------"});
    case 2:
      return line({"\x1b[1mcom.apple.CloudDocs\x1b[0m foreground:1 client:idle sync:oob"});
    case 3:
      return line({"  Fraction completed: 0.4310 / Completed: 4310 of 10000"});
    case 4:
      return line({" o ", last_.substr(0, last_.rfind('/')), "/.DS_Store ☁"});
    case 5:
      return line({" o /com~apple~CloudDocs/.Trash/", last_.substr(last_.rfind('/') + 1)});
    case 6:
      return line({"\x1b[33mscanning\x1b[0m \x1b[1;34m", last_, "\x1b[0m"});
    case 7:
    case 8:
    case 9:
      return line({"\x1b[1m o ", last_, "\x1b[0m \x1b[32m☁\x1b[0m"});
    default:
      return progressLine("\x1b[1m", "\x1b[0m");
    }
  }

  void invalidLine(std::size_t which) {
    line({" o ", last_, invalidBytes[which % invalidBytes.size()], ".bak ☁"});
  }

  std::size_t lines_;
  Random random_;
  DriveTree drive_;
  std::vector<Transfer> transfers_;
  std::size_t finished_ = 0;
  std::string last_ = "/com~apple~CloudDocs/Documents/Welcome.pdf";
  Corpus corpus_;
};

} // namespace

Corpus makeCorpus(std::size_t lines) {
  return Writer(lines).write();
}

Corpus makeListing(std::size_t paths, const std::string& lineEnd) {
  Corpus corpus;
  corpus.lines = corpus.paths = paths;
  corpus.bytes.reserve(paths * 120);
  Random random(corpusSeed + 3);
  DriveTree drive(corpusSeed + 4);
  for (std::size_t i = 0; i < paths; ++i) {
    const std::string_view path = drive.nextPath();
    corpus.pathBytes += path.size();
    corpus.bytes += " o ";
    corpus.bytes += path;
    corpus.bytes += random.happens(3, 4) ? " ☁" : " ☁ not downloaded";
    corpus.bytes += lineEnd;
  }
  corpus.folders = drive.folders();
  return corpus;
}

std::string shuffled(const Corpus& corpus) {
  std::vector<std::string_view> lines;
  lines.reserve(corpus.lines);
  std::string_view remainder = corpus.bytes;
  while (!remainder.empty()) {
    const std::size_t end = remainder.find('\n') + 1;
    lines.push_back(remainder.substr(0, end));
    remainder.remove_prefix(end);
  }

  Random random(corpusSeed + 5);
  for (std::size_t i = lines.size(); i > 1; --i)
    std::swap(lines[i - 1], lines[random.below(i)]);

  std::string bytes;
  bytes.reserve(corpus.bytes.size());
  for (const std::string_view line : lines)
    bytes += line;
  return bytes;
}

} // namespace driftmark::bench
