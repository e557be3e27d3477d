// Measures the starting application's side on a real X server of its own (Xvfb, no window
// manager), with the library's clock (steady clock, in this process):
//  - launch to first window on screen: from the start of a session (names, stay-alive lock, the
//    helper started) until the X server reports the window of the first "create" mapped
//    (MapNotify on the root window: the moment the X server puts it on the screen; its pixels are
//    drawn right after, on Qt's first paint). Median of 20 launches, with the two parts: launch
//    (the helper holds its launch lock) and create to mapped.
//  - round trip: a press of the window's button made in the X server (XTest: pointer press and
//    release, as a user's) while the library waits in next_event, to the reply handed out there
//    as an event (the library sleeps until the helper writes the reply). Median and p99 of 200
//    presses [goal: median at or under 5 ms].
// Usage: client_bench [launches] [presses]
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <poll.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "client/session.h"
#include "support/private_folders.h"

namespace {

using Clock = std::chrono::steady_clock;
using qem_client::button;
using qem_client::command;

double Millis(Clock::duration d) {
  return std::chrono::duration<double, std::milli>(d).count();
}

double Percentile(std::vector<double> values, double p) {
  std::sort(values.begin(), values.end());
  std::size_t index = static_cast<std::size_t>(p * static_cast<double>(values.size() - 1) + 0.5);
  return values[index];
}

// Xvfb on a display it picks; gives its pid, the display name in `display`.
pid_t StartXvfb(const std::string& folder, std::string& display) {
  const std::string number = folder + "/display";
  pid_t pid = ::fork();
  if (pid == 0) {
    FILE* out = std::fopen(number.c_str(), "w");
    ::dup2(fileno(out), 3);
    ::execlp("Xvfb", "Xvfb", "-displayfd", "3", "-nolisten", "tcp", "-screen", "0", "1024x768x24",
             static_cast<char*>(nullptr));
    ::_exit(127);
  }
  for (int i = 0; i < 600; ++i) {
    std::ifstream in(number);
    std::string line;
    if (std::getline(in, line) && !line.empty() && in.good()) {
      display = ":" + line;
      return pid;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return -1;
}

std::string WindowName(xcb_connection_t* x, xcb_window_t window) {
  auto reply = xcb_get_property_reply(
      x, xcb_get_property(x, 0, window, XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY, 0, 256),
      nullptr);
  if (!reply) return "";
  std::string name(static_cast<const char*>(xcb_get_property_value(reply)),
                   static_cast<std::size_t>(xcb_get_property_value_length(reply)));
  std::free(reply);
  return name;
}

// Waits up to 30 s for the X server to map a window titled `title`; gives the window or 0.
xcb_window_t AwaitMapped(xcb_connection_t* x, const std::string& title) {
  const auto deadline = Clock::now() + std::chrono::seconds(30);
  while (Clock::now() < deadline) {
    xcb_generic_event_t* event = xcb_poll_for_event(x);
    if (!event) {
      pollfd fd = {xcb_get_file_descriptor(x), POLLIN, 0};
      ::poll(&fd, 1, 100);
      continue;
    }
    xcb_window_t mapped = 0;
    if ((event->response_type & 0x7F) == XCB_MAP_NOTIFY) {
      mapped = reinterpret_cast<xcb_map_notify_event_t*>(event)->window;
    }
    std::free(event);
    if (mapped && WindowName(x, mapped) == title) return mapped;
  }
  return 0;
}

void FakeButton(xcb_connection_t* x, xcb_window_t root, int root_x, int root_y) {
  xcb_test_fake_input(x, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root, static_cast<int16_t>(root_x),
                      static_cast<int16_t>(root_y), 0);
  xcb_test_fake_input(x, XCB_BUTTON_PRESS, 1, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  xcb_test_fake_input(x, XCB_BUTTON_RELEASE, 1, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
  xcb_flush(x);
}

}  // namespace

int main(int argc, char** argv) {
  const int launches = argc > 1 ? std::atoi(argv[1]) : 20;
  const int presses = argc > 2 ? std::atoi(argv[2]) : 200;
  qem_test::PrivateFolders folders;
  std::string display;
  const pid_t xvfb = StartXvfb(folders.root().string(), display);
  if (xvfb < 0) {
    std::fprintf(stderr, "client_bench: Xvfb did not start (scripts/install-deps installs it)\n");
    return 1;
  }
  ::setenv("DISPLAY", display.c_str(), 1);
  ::setenv("QT_QPA_PLATFORM", "xcb", 1);
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
  xcb_connection_t* x = xcb_connect(display.c_str(), nullptr);
  xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
  const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  xcb_change_window_attributes(x, root, XCB_CW_EVENT_MASK, &mask);
  xcb_flush(x);
  const qem_client::launch_options options{.helper = QEM_UTIL_PATH, .relay_helper_output = false};

  std::vector<double> total, up, shown;
  for (int i = 0; i < launches; ++i) {
    const std::string title = "bench " + std::to_string(i);
    const auto begin = Clock::now();
    qem_client::session s(options);
    const auto served = Clock::now();
    s.send(command::create("w",
                           {.title = title, .style = 3, .message = "Measuring", .progress = 0.5}));
    if (!AwaitMapped(x, title)) {
      std::fprintf(stderr, "client_bench: the window never came\n");
      return 1;
    }
    const auto mapped = Clock::now();
    total.push_back(Millis(mapped - begin));
    up.push_back(Millis(served - begin));
    shown.push_back(Millis(mapped - served));
  }
  std::printf(
      "launch to first window mapped by the X server: median %.1f ms (launch %.1f ms, "
      "create to mapped %.1f ms); min %.1f, max %.1f ms (%d launches)\n",
      Percentile(total, 0.5), Percentile(up, 0.5), Percentile(shown, 0.5), Percentile(total, 0),
      Percentile(total, 1), launches);

  // Style 2: the button stands at the right of the top row, x 510 leftwards, y 20 to 42; with no
  // window manager the window is at the root's origin.
  qem_client::session s(options);
  s.send(command::create(
      "w", {.style = 2, .message = "round trip", .buttons = std::vector<button>{{"go", "Go"}}}));
  if (!AwaitMapped(x, "round trip")) return 1;
  // Presses before the window takes input are lost: wait for a first answer.
  for (int i = 0; i < 50 && !s.next_event(std::chrono::milliseconds(200)); ++i) {
    FakeButton(x, root, 500, 31);
  }
  // The library is already waiting when the press comes, as it is for a user's answer: the
  // press is made by another thread 10 to 15 ms into the wait, at no fixed moment of the looks.
  std::vector<double> trips;
  for (int i = 0; i < presses; ++i) {
    Clock::time_point pressed;
    std::thread presser([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(10000 + std::rand() % 5000));
      pressed = Clock::now();
      FakeButton(x, root, 500, 31);
    });
    auto e = s.next_event(std::chrono::seconds(10));
    const auto got = Clock::now();
    presser.join();
    if (!e || !e->pressed()) {
      std::fprintf(stderr, "client_bench: press %d brought no reply\n", i);
      return 1;
    }
    trips.push_back(Millis(got - pressed));
  }
  std::printf(
      "press in the X server to the event in the library: median %.2f ms [goal: at or under 5], "
      "p99 %.2f ms, max %.2f ms (%d presses)\n",
      Percentile(trips, 0.5), Percentile(trips, 0.99), Percentile(trips, 1), presses);
  xcb_disconnect(x);
  ::kill(xvfb, SIGTERM);
  int status;
  ::waitpid(xvfb, &status, 0);
  return 0;
}
