// ask: shows a progress window, asks a question over it and prints the answer, the id of the
// button pressed ("keep" or "discard"). The installed helper is found without a path.
#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "client/session.h"

int main() {
  using namespace std::chrono_literals;
  using qem_client::command;
  try {
    qem_client::session helper;
    helper.send(command::create(
        "job", {.title = "Example", .style = 3, .message = "Working...", .progress = 0}));
    for (int step = 1; step <= 4; ++step) {
      std::this_thread::sleep_for(250ms);
      helper.send(command::set(
          "job", {.message = "Step " + std::to_string(step) + " of 4", .progress = step / 4.0}));
    }
    helper.send(command::push("job", {.title = "Question",
                                      .style = 1,
                                      .message = "Keep the results?",
                                      .buttons = std::vector<qem_client::button>{
                                          {"keep", "Keep"}, {"discard", "Discard"}}}));
    // Sleeps until the answer comes (or the helper ends), for as long as it takes.
    for (;;) {
      const auto e = helper.next_event(std::nullopt);
      if (e->pressed()) {
        std::cout << e->btn_id << std::endl;
        return 0;
      }
      if (e->what == qem_client::event::kind::helper_ended) {
        std::cerr << "ask: the helper ended before an answer came\n";
        return 1;
      }
    }
  } catch (const qem_client::error& error) {
    std::cerr << "ask: " << error.what() << '\n';
    return 1;
  }
}
