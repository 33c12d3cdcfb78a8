#pragma once

#include "ports/Dialogs.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// Dialogs that give prepared answers and record what they showed. Without a prepared answer an
/// alert is closed, which counts as its last button.
class TestDialogs final : public Dialogs {
public:
  std::optional<std::size_t> runModal(const Alert& alert) override {
    shown_.push_back(alert);
    if (const auto handler = onShow_)
      handler(alert);
    if (unanswered_)
      return std::nullopt;
    if (answers_.empty())
      return alert.buttons.empty() ? 0 : alert.buttons.size() - 1;
    const std::optional<std::size_t> answer = answers_.front();
    answers_.pop_front();
    return answer;
  }

  std::optional<std::string> chooseFolder(const FolderPanel& panel) override {
    folderPanels_.push_back(panel);
    if (unanswered_)
      return std::nullopt;
    return std::exchange(folder_, std::nullopt);
  }

  /// Prepares the answer of the next folder panel; without one nothing is chosen.
  void choose(std::string folder) { folder_ = std::move(folder); }

  /// Returns all folder panels so far and clears the list.
  std::vector<FolderPanel> takeFolderPanels() { return std::exchange(folderPanels_, {}); }

  void orderFrontAboutPanel(const std::string& credits) override {
    aboutPanels_.push_back(credits);
  }

  /// The credits of every about panel that was shown.
  const std::vector<std::string>& aboutPanels() const { return aboutPanels_; }

  /// Prepares the answer of the next alert that has none.
  void answer(std::size_t button) { answers_.emplace_back(button); }

  /// Makes the next alert without a prepared answer close unanswered, as when the application ends.
  void leaveUnanswered() { answers_.emplace_back(std::nullopt); }

  /// Makes every alert close unanswered, and nothing be chosen in any folder panel.
  void leaveAllUnanswered() { unanswered_ = true; }

  /// Called while an alert is open.
  void onShow(std::function<void(const Alert&)> handler) { onShow_ = std::move(handler); }

  /// Returns all alerts so far and clears the list.
  std::vector<Alert> take() { return std::exchange(shown_, {}); }

private:
  std::vector<Alert> shown_;
  std::vector<std::string> aboutPanels_;
  std::vector<FolderPanel> folderPanels_;
  std::optional<std::string> folder_;
  std::deque<std::optional<std::size_t>> answers_;
  bool unanswered_ = false;
  std::function<void(const Alert&)> onShow_;
};

} // namespace driftmark::test
