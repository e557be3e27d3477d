#include "platform/open_file_dialog.h"

#include <QFileDialog>
#include <QStringList>

#include "platform/desktop_window.h"

namespace platform {

namespace {
OpenFileDialog::Answer& TestAnswer() {
  static OpenFileDialog::Answer answer;
  return answer;
}

QString ToQt(const std::string& text) {
  return QString::fromUtf8(text.data(), std::ssize(text));
}
}  // namespace

void OpenFileDialog::AnswerForTests(Answer answer) {
  TestAnswer() = std::move(answer);
}

std::optional<FolderItem> OpenFileDialog::ShowModal(const DesktopWindow* owner) const {
  if (TestAnswer()) return TestAnswer()(*this);
  QFileDialog dialog(owner ? owner->Frame() : nullptr, ToQt(Title));
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
  if (!ActionButtonCaption.empty())
    dialog.setLabelText(QFileDialog::Accept, ToQt(ActionButtonCaption));
  if (!CancelButtonCaption.empty())
    dialog.setLabelText(QFileDialog::Reject, ToQt(CancelButtonCaption));
  if (!InitialFolder.Path().empty()) dialog.setDirectory(ToQt(InitialFolder.NativePath()));
  if (!SuggestedFileName.empty()) dialog.selectFile(ToQt(SuggestedFileName));
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  const QStringList chosen = dialog.selectedFiles();
  if (chosen.isEmpty()) return std::nullopt;
  return FolderItem(std::filesystem::path(chosen.front().toStdString()));
}

}  // namespace platform
