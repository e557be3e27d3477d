#pragma once
// Shared by the command server tests: a server in this process, on channel "cmd" with replies on
// "rep", whose windows the test reads back; the stay-alive lock held as the starting application
// holds it; commands put in the channel by this process or by real sender processes.

#include <QCoreApplication>
#include <QtTest/QTest>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "app/qem_util.h"
#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "progress/wprogress.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace qem_test {

class ServerTest : public TempEnvTest {
 protected:
  void SetUp() override {
    TempEnvTest::SetUp();
    alive = lock_file::make("alive", log_file::make_null());
    replies = many_to_one::receiver::make("rep", log_file::make_null());
    ASSERT_NE(alive, nullptr);
    ASSERT_NE(replies, nullptr);
  }
  void TearDown() override {
    server.reset();
    replies.reset();
    alive.reset();
    TempEnvTest::TearDown();
  }

  qem_util& Start() {
    server = std::make_unique<qem_util>("alive", "cmd", "rep", "up");
    return *server;
  }

  // Puts the messages in the command channel from this process, in one critical section.
  static void Put(const std::vector<std::string>& messages) {
    auto op = std::make_shared<many_to_one::sender>("cmd", log_file::make_null())->op();
    for (const auto& message : messages) op->write(message);
  }

  // Sends the messages, in their order, from a sender process (one message per line of its
  // input), and waits for it to finish.
  void SendFromProcess(const std::vector<std::string>& messages) {
    std::string lines;
    for (const auto& message : messages) lines += message + "\n";
    const auto input = root() / ("input" + std::to_string(++inputs_));
    WriteFile(input, lines);
    auto sender = Spawn({QEM_CHANNEL_TOOL, "send", "cmd"}, {.stdin_path = input.string()});
    ASSERT_EQ(sender.Wait(std::chrono::seconds(30)), 0);
  }

  // Runs the loop, and with it the server's ticks, until the condition holds or the limit ends.
  static bool RunUntil(const std::function<bool()>& condition,
                       std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
  }

  // The window entered under `id`, or nil.
  wProgress* Window(const std::string& id) const {
    auto entry = server->objects().find(id);
    if (entry == server->objects().end()) return nullptr;
    return dynamic_cast<wProgress*>(entry->second.get());
  }
  std::string TitleOf(const std::string& id) const {
    wProgress* w = Window(id);
    return w ? w->Title() : "<none>";
  }

  std::string Reply() { return replies->op()->read(); }
  // The command channel's data file.
  std::filesystem::path Data() const { return prefs() / "qem.many_to_one.cmd.dir" / "data"; }

  std::shared_ptr<lock_file> alive;
  std::shared_ptr<many_to_one::receiver> replies;
  std::unique_ptr<qem_util> server;

 private:
  int inputs_ = 0;
};

}  // namespace qem_test
