#pragma once
// qem_util_test: the test console, the window of test mode. It stands in for the application
// that normally starts the helper: it holds the stay-alive lock while its box is checked,
// launches a copy of the helper that serves, and sends the text of its text area as one command
// on a channel. Closing it ends the process. Main thread only; each handler runs to its end.

#include <memory>

#include "channel/lock_file.h"
#include "channel/many_to_one_sender.h"
#include "platform/desktop_controls.h"
#include "platform/desktop_text_controls.h"
#include "platform/desktop_window.h"

class qem_util_test : public platform::DesktopWindow {
 public:
  // Makes the window with its twelve controls and shows it.
  qem_util_test();
  ~qem_util_test() override;

  // Checked: takes the stay-alive lock named by tfstay_alive_key, once, without waiting; if it
  // can't be had the box stays checked and nothing is held. Unchecked: lets the lock go, and a
  // copy started with that key quits on its next tick. A key that is no file name of its own
  // in the temporary folder (empty, "../x", a full path) gives one line on stderr, and no file
  // is made, locked or deleted.
  void cb_stay_alive_key_ValueChanged();
  // Starts the program in tfpath with "--stay-alive-key=K --channel=C --launch-key=K.launched
  // --reply-channel=C.reply" (K and C the two fields as they stand), so that the copy serves:
  // it holds K.launched once it is up and replies on C.reply. A text that is no full path does
  // nothing; a path that can't be run gives one line on stderr.
  void pblaunch_Pressed();
  // Lets the user choose the program in a file dialog (a modal loop) and puts its path in
  // tfpath; a cancel changes nothing.
  void pbbrowse_Pressed();
  // Makes a new sender for the channel in tfchannel; the one before is dropped. Touches no file.
  // A channel that would leave the preferences folder gives one line on stderr and no sender.
  void pbstart_Pressed();
  // Sends the text area's text, exactly as it stands, as one message through the sender of the
  // last Start; before any Start or after a refused one, as if Start had been pressed. Blocks
  // while another process holds the channel's entry lock; a failure gives one line on stderr.
  void pbsend_Pressed();
  // The window closes: Quit(0).
  void Event_Closing() override;

  // The controls, by name; made once with the window.
  platform::DesktopTextField& tfstay_alive_key() const { return *tfstay_alive_key_; }
  platform::DesktopLabel& Label1() const { return *Label1_; }
  platform::DesktopCheckBox& cb_stay_alive_key() const { return *cb_stay_alive_key_; }
  platform::DesktopLabel& Label2() const { return *Label2_; }
  platform::DesktopTextField& tfchannel() const { return *tfchannel_; }
  platform::DesktopLabel& Label3() const { return *Label3_; }
  platform::DesktopTextField& tfpath() const { return *tfpath_; }
  platform::DesktopButton& pblaunch() const { return *pblaunch_; }
  platform::DesktopButton& pbbrowse() const { return *pbbrowse_; }
  platform::DesktopButton& pbstart() const { return *pbstart_; }
  platform::DesktopTextArea& TextArea1() const { return *TextArea1_; }
  platform::DesktopButton& pbsend() const { return *pbsend_; }

 private:
  void Layout();
  void CreateControls();

  // The stay-alive lock while the box holds it.
  std::shared_ptr<lock_file> lock;
  // The sender of the last Start.
  std::shared_ptr<many_to_one::sender> sock;

  // In the order of creation, which is the tab order.
  std::unique_ptr<platform::DesktopTextField> tfstay_alive_key_;
  std::unique_ptr<platform::DesktopLabel> Label1_;
  std::unique_ptr<platform::DesktopCheckBox> cb_stay_alive_key_;
  std::unique_ptr<platform::DesktopLabel> Label2_;
  std::unique_ptr<platform::DesktopTextField> tfchannel_;
  std::unique_ptr<platform::DesktopLabel> Label3_;
  std::unique_ptr<platform::DesktopTextField> tfpath_;
  std::unique_ptr<platform::DesktopButton> pblaunch_;
  std::unique_ptr<platform::DesktopButton> pbbrowse_;
  std::unique_ptr<platform::DesktopButton> pbstart_;
  std::unique_ptr<platform::DesktopTextArea> TextArea1_;
  std::unique_ptr<platform::DesktopButton> pbsend_;
};
