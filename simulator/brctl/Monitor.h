#pragma once

#include "brctl/BirdLink.h"
#include "brctl/OutputLines.h"
#include "brctl/TextOutput.h"

namespace icloud {

/// Prints what the daemon sends, until the daemon ends or the reader closes the output.
class Monitor {
public:
  Monitor(BirdLink& bird, TextOutput& output);

  /// Shows the items of a container. Ends by throwing BirdFailure or OutputClosed.
  [[noreturn]] void showItems(const std::string& container);

  /// Shows the progress of all transfers. Ends by throwing BirdFailure or OutputClosed.
  [[noreturn]] void showProgress();

private:
  [[noreturn]] void follow();
  void show(const Record& record);
  void waitForBird();

  BirdLink& bird_;
  TextOutput& output_;
  Style style_;
};

} // namespace icloud
