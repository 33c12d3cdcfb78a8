#pragma once

#include "ports/Dialogs.h"
#include "support/contracts/SubjectFactory.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// Dialogs under test, with a user who answers.
class DialogsSubject {
public:
  virtual ~DialogsSubject() = default;

  virtual Dialogs& dialogs() = 0;

  /// The user presses the button of this index in the next alert, or closes it.
  virtual void willPress(std::size_t button) = 0;
  virtual void willClose() = 0;

  /// An existing folder, without a trailing slash, and one inside it.
  virtual std::string folder() = 0;
  virtual std::string folderInside() = 0;

  /// In the next folder panel the user chooses a folder, confirms the one that it opened at, or
  /// cancels.
  virtual void willChoose(const std::string& folder) = 0;
  virtual void willConfirm() = 0;
  virtual void willCancel() = 0;
};

class DialogsContract : public testing::TestWithParam<SubjectFactory<DialogsSubject>> {
protected:
  std::optional<std::size_t> show(const std::vector<std::string>& buttons) {
    return subject_->dialogs().runModal(
        {.messageText = "message", .informativeText = "information", .buttons = buttons});
  }

  std::optional<std::string> chooseFolder() {
    return subject_->dialogs().chooseFolder({.title = "title",
                                             .message = "message",
                                             .prompt = "prompt",
                                             .directory = subject_->folder()});
  }

  std::unique_ptr<DialogsSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
