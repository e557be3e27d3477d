#pragma once
// Shared by the command server tests: a server in this process on channel "cmd", whose windows
// the test reads back; the stay-alive lock held as the starting application holds it.

#include <QCoreApplication>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "app/window_maker.h"
#include "channel/lock_file.h"
#include "progress/wprogress.h"
#include "server/qem_util.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace qem_test {

inline std::string Create(const std::string& id, const std::string& title,
                          const std::string& more = "") {
  return R"({"obj_id":")" + id + R"(","cmd":"create","type":"wprogress","style":1,"title":")" +
         title + "\"" + more + "}";
}
inline std::string Set(const std::string& id, const std::string& title) {
  return R"({"obj_id":")" + id + R"(","cmd":"set","title":")" + title + R"("})";
}

class ServerTest : public TempEnvTest {
 protected:
  void SetUp() override { alive = lock_file::make("alive", log_file::make_null()); }
  void TearDown() override { server.reset(); }
  void Start(qem_util::pacing pace = {}) {
    server = std::make_unique<qem_util>("alive", "cmd", "rep", "up", make_progress_window, pace);
  }

  // Runs the loop, and with it the server's ticks, until the condition holds or the limit passes.
  static bool RunUntil(const std::function<bool()>& condition,
                       std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
  }
  wProgress* Window(const std::string& id) const {
    auto entry = server->objects().find(id);
    return entry == server->objects().end() ? nullptr
                                            : dynamic_cast<wProgress*>(entry->second.get());
  }
  std::string TitleOf(const std::string& id) const {
    return Window(id) ? Window(id)->Title() : "<none>";
  }
  std::filesystem::path Data() const { return prefs() / "qem.many_to_one.cmd.dir" / "data"; }

  std::shared_ptr<lock_file> alive;
  std::unique_ptr<qem_util> server;
};

}  // namespace qem_test
