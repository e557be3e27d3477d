// The reply path: a forwarder hands finished texts to a reply channel, byte for byte, and holds
// nothing between messages.

#include "server/message_forwarder_many_to_one.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "channel/log_file.h"
#include "channel/many_to_one_receiver.h"
#include "support/temp_env.h"

namespace {

using MessageForwarderTest = qem_test::TempEnvTest;

TEST_F(MessageForwarderTest, ReplyArrivesOnTheReplyChannelByteForByte) {
  auto replies = many_to_one::receiver::make("cmd.reply", log_file::make_null());
  ASSERT_NE(replies, nullptr);
  std::unique_ptr<message_forwarder> forwarder =
      std::make_unique<message_forwarder_many_to_one>("cmd.reply");
  EXPECT_FALSE(std::filesystem::exists(prefs() / "qem.many_to_one.cmd.reply.dir"));
  const std::string reply =
      "{\"obj_id\":\"p1\",\"cmd\":\"pressed\",\"btn_id\":\"st\\\"op \xE2\x9C\x93\"}\r\n\t ";
  forwarder->write(reply);
  // Nothing is held between messages: no entry lock, only the channel's folder and data.
  EXPECT_FALSE(std::filesystem::exists(prefs() / "qem.many_to_one.cmd.reply"));
  forwarder->write("second");
  EXPECT_EQ(replies->op()->read(), reply);
  EXPECT_EQ(replies->op()->read(), "second");
  EXPECT_EQ(replies->op()->read(), "");
}

}  // namespace
