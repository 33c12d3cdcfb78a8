#pragma once

#include "platform/Dialogs.h"
#include "support/contracts/SubjectFactory.h"

#include <cstddef>
#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// Dialogs under test, with a person who answers.
class DialogsSubject {
public:
  virtual ~DialogsSubject() = default;

  virtual Dialogs& dialogs() = 0;

  /// The next alert is answered by its button of this index, or closed.
  virtual void willPress(std::size_t button) = 0;
  virtual void willClose() = 0;
};

class DialogsContract : public testing::TestWithParam<SubjectFactory<DialogsSubject>> {
protected:
  std::size_t show(const std::vector<std::string>& buttons) {
    return subject_->dialogs().runModal(
        {.messageText = "message", .informativeText = "information", .buttons = buttons});
  }

  std::unique_ptr<DialogsSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
