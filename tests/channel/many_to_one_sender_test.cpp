// The channel's layout on disk and its sending end: records, the entry lock's life, private
// files, and a fault that leaves nothing held.

#include "channel/many_to_one_sender.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <iterator>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel_fixture.h"
#include "platform/exceptions.h"
#include "support/process.h"

namespace {

using SenderTest = qem_test::ChannelTest;

TEST_F(SenderTest, OpHoldsTheEntryLockForItsLifeAndAppendsEachTextAndOneNul) {
  auto sock = std::make_shared<many_to_one::sender>("ch", log_file::make_null());
  EXPECT_TRUE(std::filesystem::is_empty(prefs())) << "a sender alone touches no file";
  auto op = sock->op();
  EXPECT_TRUE(std::filesystem::is_directory(Folder("ch")));  // made under the lock
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));         // an op that writes nothing
  EXPECT_EQ(lock_file::make(platform::FolderItem(EntryLock("ch")), log_file::make_null()), nullptr);
  for (const char* text : {"a", "", "b"}) op->write(text);  // one critical section
  op.reset();
  qem_test::Send("ch", {"c"});
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("a\0\0b\0c\0", 7));
  // The folder stays with the data file alone in it, and the entry lock's file goes with the op.
  const std::filesystem::directory_iterator entries(Folder("ch"));
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
}

// Makes a folder, or an empty file, with exactly `mode`, and of user `uid` when that is set.
void Make(const std::filesystem::path& path, mode_t mode, bool folder = true, uid_t uid = 0) {
  folder ? void(std::filesystem::create_directory(path)) : qem_test::WriteFile(path, "");
  ::chmod(path.c_str(), mode);
  if (uid != 0) {
    EXPECT_EQ(::chown(path.c_str(), uid, uid), 0);
  }
}

// What `use` threw, or "" when it went on.
std::string Outcome(const std::function<void()>& use) {
  try {
    use();
    return "";
  } catch (const platform::Exception& e) {
    return e.what();
  }
}

TEST_F(SenderTest, ChannelFilesArePrivateAndNeitherEndUsesALinkOrAnotherUsersFile) {
  qem_test::Send("ch", {"secret"});
  EXPECT_EQ(std::filesystem::status(Folder("ch")).permissions(), std::filesystem::perms(0700));
  EXPECT_EQ(std::filesystem::status(Data("ch")).permissions(), std::filesystem::perms(0600));
  // What the links point at, which nothing may read or change.
  const auto theirs = root() / "theirs", their_folder = root() / "their_folder";
  qem_test::WriteFile(theirs, "theirs");
  std::filesystem::create_directory(their_folder);
  const auto link = [](auto target, auto at) { std::filesystem::create_symlink(target, at); };
  using Id = const std::string&;
  const struct {
    const char* name;
    std::function<void(Id)> plant;
    std::string said;  // in what both ends throw; "" when both go on
  } rows[] = {
      {"link at the entry lock", [&](Id id) { link(theirs, EntryLock(id)); }, "symbolic link"},
      {"link at the folder", [&](Id id) { link(their_folder, Folder(id)); }, "symbolic link"},
      {"link at the data file", [&](Id id) { Make(Folder(id), 0700), link(theirs, Data(id)); },
       "symbolic link"},
      {"folder others may write to", [&](Id id) { Make(Folder(id), 0777); }, "(mode 0777)"},
      {"data file the group may write to",
       [&](Id id) { Make(Folder(id), 0700), Make(Data(id), 0620, false); }, "(mode 0620)"},
      {"folder of another user", [&](Id id) { Make(Folder(id), 0700, true, 4242); },
       "another user (uid 4242)"},
      {"own folder 0755, data file 0644: a peer's umask",
       [&](Id id) { Make(Folder(id), 0755), Make(Data(id), 0644, false); }, ""},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const auto& row = rows[i];
    if (row.said.starts_with("another") && ::geteuid() != 0) continue;  // chown needs root
    const std::string id = std::string("c").append(std::to_string(i));
    row.plant(id);
    auto sock = many_to_one::receiver::make(id, log_file::make_null());
    for (const std::string& what : {Outcome([&] { qem_test::Send(id, {"mine"}); }),
                                    Outcome([&] { EXPECT_EQ(sock->op()->read(), "mine"); })}) {
      EXPECT_EQ(what.empty(), row.said.empty()) << row.name << ": " << what;
      EXPECT_NE(what.find(row.said), std::string::npos) << row.name << ": " << what;
    }
  }
  EXPECT_EQ(qem_test::ReadFile(theirs), "theirs");
  EXPECT_TRUE(std::filesystem::is_empty(their_folder));
}

}  // namespace
