#include "support/contracts/DialogsContract.h"

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(DialogsContract);

TEST_P(DialogsContract, chosenButtonIsReturnedAsIndex) {
  for (std::size_t button = 0; button < 3; ++button) {
    subject_->willPress(button);
    EXPECT_EQ(show({"A", "B", "C"}), button);
  }
}

TEST_P(DialogsContract, closedAlertCountsAsLastButton) {
  subject_->willClose();
  EXPECT_EQ(show({"A", "B", "C"}), 2U);
  subject_->willClose();
  EXPECT_EQ(show({"A"}), 0U);
}

TEST_P(DialogsContract, alertWithoutButtonsCanBeAcknowledgedAndClosed) {
  subject_->willPress(0);
  EXPECT_EQ(show({}), 0U);
  subject_->willClose();
  EXPECT_EQ(show({}), 0U);
}

TEST_P(DialogsContract, chosenFolderIsReturnedAsPath) {
  subject_->willChoose(subject_->folderInside());
  EXPECT_EQ(chooseFolder(), subject_->folderInside());
}

TEST_P(DialogsContract, confirmedStartFolderIsReturnedUnchanged) {
  subject_->willConfirm();
  EXPECT_EQ(chooseFolder(), subject_->folder());
}

TEST_P(DialogsContract, cancelledPanelReturnsNoFolder) {
  subject_->willCancel();
  EXPECT_EQ(chooseFolder(), std::nullopt);
}

} // namespace driftmark::test
