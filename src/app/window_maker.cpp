#include "app/window_maker.h"

#include "progress/wprogress.h"

std::shared_ptr<commandable> make_progress_window(
    const std::string& obj_id, const std::shared_ptr<platform::Dictionary>& message,
    std::shared_ptr<message_forwarder> replies) {
  auto window = std::make_shared<wProgress>(obj_id, message, std::move(replies));
  window->Show();
  return window;
}
