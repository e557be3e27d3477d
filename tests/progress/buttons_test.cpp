// A press answers on a real reply channel, byte for byte, and then ends a pushed state.

#include <gtest/gtest.h>

#include "channel/log_file.h"
#include "channel/many_to_one_receiver.h"
#include "platform/exceptions.h"
#include "progress_fixture.h"
#include "server/message_forwarder_many_to_one.h"
#include "support/temp_env.h"

namespace {

using qem_test::Command;
using Buttons = qem_test::TempEnvTest;

TEST_F(Buttons, PressRepliesOnTheChannelThenPopsAPushedState) {
  auto replies = many_to_one::receiver::make("cmd.reply", log_file::make_null());
  ASSERT_NE(replies, nullptr);
  auto w = qem_test::MakeWindow(
      R"({"style":3,"btn_spec":[{"id":"stop","text":"Stop"},{"text":"No id"}]})", nullptr,
      std::make_shared<message_forwarder_many_to_one>("cmd.reply"));
  w->cmd(Command(R"({"cmd":"push","style":1,"btn_spec":[{"id":"ok","text":"OK"}]})"));

  qem_test::Press(*w, 0);
  EXPECT_EQ(replies->op()->read(), R"({"obj_id":"w1","cmd":"pressed","btn_id":"ok"})");
  EXPECT_EQ(w->btn(0).Caption(), "Stop");
  // On the bottom state every press answers and nothing else changes.
  qem_test::Press(*w, 1);
  qem_test::Press(*w, 0);
  EXPECT_EQ(replies->op()->read(), R"({"obj_id":"w1","cmd":"pressed","btn_id":""})");
  EXPECT_EQ(replies->op()->read(), R"({"obj_id":"w1","cmd":"pressed","btn_id":"stop"})");
  EXPECT_EQ(replies->op()->read(), "");
  EXPECT_EQ(w->stack.size(), 1u);
}

class FailingForwarder : public message_forwarder {
 public:
  void write(const std::string&) override { throw platform::IOException("reply channel gone"); }
};

TEST_F(Buttons, AFailedReplyIsReportedAndKeepsThePushedState) {
  auto w = qem_test::MakeWindow(R"({"style":1,"btn_spec":[{"text":"A"}]})", nullptr,
                                std::make_shared<FailingForwarder>());
  w->cmd(Command(R"({"cmd":"push","style":1,"btn_spec":[{"text":"B"}]})"));
  testing::internal::CaptureStderr();
  qem_test::Press(*w, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "qem_util: reply channel gone\n");
  EXPECT_EQ(w->btn(0).Caption(), "B");
}

}  // namespace
