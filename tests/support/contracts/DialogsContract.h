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

  /// The next alert is answered by its button of this index, or closed.
  virtual void willPress(std::size_t button) = 0;
  virtual void willClose() = 0;

  /// A folder that there is, without a trailing slash, and one in it.
  virtual std::string folder() = 0;
  virtual std::string folderInside() = 0;

  /// In the next folder panel a folder is chosen, or the one that it opened at is confirmed, or
  /// nothing is chosen.
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
