#pragma once
// The maker of the server's windows, which the application hands to the server: a "create" of
// type "wprogress" becomes a progress window on the screen. The server knows windows only as
// commandable; this is where the two meet.

#include <memory>
#include <string>

#include "platform/dictionary.h"
#include "server/commandable.h"
#include "server/message_forwarder.h"

// A new progress window for `obj_id`, built from the whole "create" message, answering through
// `replies`, and shown. Never throws for what the message holds (see wProgress).
std::shared_ptr<commandable> make_progress_window(
    const std::string& obj_id, const std::shared_ptr<platform::Dictionary>& message,
    std::shared_ptr<message_forwarder> replies);
