// The file dialog over Qt's: what it is given shows, and it gives the chosen file or nothing.

#include "platform/open_file_dialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFileDialog>
#include <QTimer>
#include <optional>

#include "support/temp_env.h"

namespace {

using OpenFileDialogTest = qem_test::TempEnvTest;

TEST_F(OpenFileDialogTest, GivesTheChosenFileOrNothingOnCancel) {
  const auto file = root() / "qem_util";
  qem_test::WriteFile(file, "");
  const struct {
    const char* name;
    bool accept;
    std::optional<std::string> chosen;
  } cases[] = {{"chosen", true, file.string()}, {"cancelled", false, std::nullopt}};
  for (const auto& c : cases) {
    platform::OpenFileDialog dialog;
    dialog.Title = "Pick one";
    dialog.ActionButtonCaption = "Select";
    dialog.CancelButtonCaption = "Give up";
    dialog.SuggestedFileName = "qem_util";
    dialog.InitialFolder = platform::FolderItem(root());
    QString title, accept_label, reject_label, folder;
    // Answers the dialog as the user would, once it is up.
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
      auto* shown = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      if (!shown) return;
      user.stop();
      title = shown->windowTitle();
      accept_label = shown->labelText(QFileDialog::Accept);
      reject_label = shown->labelText(QFileDialog::Reject);
      folder = shown->directory().absolutePath();
      QDialog* as_dialog = shown;  // where the buttons' slots are public
      c.accept ? as_dialog->accept() : as_dialog->reject();
    });
    user.start(10);
    const auto chosen = dialog.ShowModal();
    EXPECT_EQ(title, "Pick one") << c.name;
    EXPECT_EQ(accept_label, "Select") << c.name;
    EXPECT_EQ(reject_label, "Give up") << c.name;
    EXPECT_EQ(folder.toStdString(), root().string()) << c.name;
    ASSERT_EQ(chosen.has_value(), c.chosen.has_value()) << c.name;
    if (chosen) {
      EXPECT_EQ(chosen->NativePath(), *c.chosen) << c.name;
    }
  }
}

}  // namespace
