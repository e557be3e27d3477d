#include "console/qem_util_test.h"

#include <optional>
#include <string>

#include "channel/log_file.h"
#include "platform/documents_folder.h"
#include "platform/exceptions.h"
#include "platform/open_file_dialog.h"
#include "platform/open_program.h"
#include "platform/run_loop.h"

namespace {
void Place(platform::DesktopUIControl& c, std::int64_t left, std::int64_t top, std::int64_t width,
           std::int64_t height) {
  c.Left(left);
  c.Top(top);
  c.Width(width);
  c.Height(height);
}

template <class Control>
std::unique_ptr<Control> Make(platform::DesktopWindow& window, std::int64_t left, std::int64_t top,
                              std::int64_t width, std::int64_t height) {
  auto control = std::make_unique<Control>(window);
  Place(*control, left, top, width, height);
  return control;
}

std::unique_ptr<platform::DesktopLabel> MakeLabel(platform::DesktopWindow& window, std::int64_t top,
                                                  std::string text) {
  auto label = Make<platform::DesktopLabel>(window, 12, top, 100, 20);
  label->Text(std::move(text));
  return label;
}

std::unique_ptr<platform::DesktopButton> MakeButton(platform::DesktopWindow& window,
                                                    std::int64_t left, std::int64_t top,
                                                    std::string caption) {
  auto button = Make<platform::DesktopButton>(window, left, top, 80, 22);
  button->Caption(std::move(caption));
  return button;
}
}  // namespace

qem_util_test::qem_util_test() : platform::DesktopWindow(Type::Document) {
  Layout();
  CreateControls();
  Open();
}

// The controls go before the window that holds their widgets; the lock and the sender with them.
qem_util_test::~qem_util_test() = default;

void qem_util_test::Layout() {
  Title("qem_util_test");
  Width(600);
  Height(400);
  MinimumWidth(64);
  MinimumHeight(64);
  MaximumWidth(32000);
  MaximumHeight(32000);
  Resizeable(true);
  Visible(true);
}

void qem_util_test::CreateControls() {
  tfstay_alive_key_ = Make<platform::DesktopTextField>(*this, 124, 20, 220, 22);
  Label1_ = MakeLabel(*this, 20, "stay_alive_key");
  cb_stay_alive_key_ = Make<platform::DesktopCheckBox>(*this, 364, 20, 100, 20);
  cb_stay_alive_key_->Caption("lock");
  cb_stay_alive_key_->Value(false);
  Label2_ = MakeLabel(*this, 54, "channel");
  tfchannel_ = Make<platform::DesktopTextField>(*this, 124, 54, 220, 22);
  Label3_ = MakeLabel(*this, 88, "exe");
  tfpath_ = Make<platform::DesktopTextField>(*this, 124, 86, 220, 22);
  pblaunch_ = MakeButton(*this, 459, 86, "Launch");
  pbbrowse_ = MakeButton(*this, 364, 86, "Browse");
  pbstart_ = MakeButton(*this, 364, 54, "Start");
  TextArea1_ = Make<platform::DesktopTextArea>(*this, 20, 150, 444, 230);
  pbsend_ = MakeButton(*this, 476, 258, "Send");

  cb_stay_alive_key_->AddValueChangedHandler(
      [this](platform::DesktopCheckBox&) { cb_stay_alive_key_ValueChanged(); });
  pblaunch_->AddPressedHandler([this](platform::DesktopButton&) { pblaunch_Pressed(); });
  pbbrowse_->AddPressedHandler([this](platform::DesktopButton&) { pbbrowse_Pressed(); });
  pbstart_->AddPressedHandler([this](platform::DesktopButton&) { pbstart_Pressed(); });
  pbsend_->AddPressedHandler([this](platform::DesktopButton&) { pbsend_Pressed(); });
}

void qem_util_test::cb_stay_alive_key_ValueChanged() {
  if (cb_stay_alive_key().Value()) {
    lock = lock_file::make(tfstay_alive_key().Text(), log_file::make_null());
  } else {
    lock.reset();
  }
}

void qem_util_test::pblaunch_Pressed() {
  std::optional<platform::FolderItem> program;
  try {
    program = platform::FolderItem::FromNativePath(tfpath().Text());
  } catch (const platform::Exception&) {
    // No path to start: the press does nothing.
  }
  if (!program) return;
  const std::string& key = tfstay_alive_key().Text();
  const std::string& channel = tfchannel().Text();
  // The names of the launch lock and the reply channel follow from the two fields, so that the
  // copy serves and a developer knows where to look.
  platform::OpenProgram(*program, "--stay-alive-key=" + key + " --channel=" + channel +
                                      " --launch-key=" + key + ".launched" +
                                      " --reply-channel=" + channel + ".reply");
}

void qem_util_test::pbbrowse_Pressed() {
  platform::OpenFileDialog dialog;
  dialog.ActionButtonCaption = "Select";
  dialog.CancelButtonCaption = "Cancel";
  dialog.SuggestedFileName = "";
  dialog.Title = "Select qem_util.exe";
  dialog.PromptText = "Select qem_util.exe";
  dialog.InitialFolder = platform::SpecialFolder::Documents();
  if (auto chosen = dialog.ShowModal(this)) tfpath().Text(chosen->NativePath());
}

void qem_util_test::pbstart_Pressed() {
  // Dropped first: after a refused channel no earlier sender is left for Send to use.
  sock.reset();
  sock = std::make_shared<many_to_one::sender>(tfchannel().Text(), log_file::make_null());
}

void qem_util_test::pbsend_Pressed() {
  if (!sock) pbstart_Pressed();
  sock->op()->write(TextArea1().Text());
}

void qem_util_test::Event_Closing() {
  platform::Quit(0);
}
