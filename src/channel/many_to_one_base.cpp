#include "channel/many_to_one_base.h"

#include <cerrno>

#include "channel/names.h"
#include "platform/exceptions.h"
#include "platform/text_stream.h"

namespace many_to_one {

namespace {
const std::string kPrefix = "qem.many_to_one.";

[[noreturn]] void CannotOpen(const platform::FolderItem& file, const char* how, int error) {
  throw platform::NilObjectException("Cannot open " + file.NativePath() + how + ": " +
                                     platform::OpenFailure(error));
}

[[noreturn]] void Refuse(const char* what, const platform::FolderItem& item,
                         const std::string& why) {
  throw platform::IOException(std::string("the ") + what + " " + item.NativePath() +
                              " is refused: " + why);
}
}  // namespace

void check_id(const std::string& id) {
  if (auto why = names::channel_id_refusal(id)) {
    throw platform::UnsupportedFormatException("channel id " + names::quoted(id) + " refused: it " +
                                               *why);
  }
}

base::base(std::string id, std::shared_ptr<log_file> log_) : id_(std::move(id)) {
  if (!log_) throw platform::NilObjectException("many_to_one endpoint needs a log");
  check_id(id_);
  log = std::move(log_);
}

platform::FolderItem base::entry_mutex() const {
  return platform::SpecialFolder::Preferences().Child(kPrefix + id());
}

platform::FolderItem base::channel_folder() const {
  return platform::SpecialFolder::Preferences().Child(kPrefix + id() + ".dir");
}

std::shared_ptr<base_op> base::make_op() {
  throw platform::RuntimeException("many_to_one.base.op is abstract");
}

base_op::base_op(std::shared_ptr<base> endpoint, std::shared_ptr<log_file> log_) {
  if (!endpoint || !log_) throw platform::NilObjectException("many_to_one op needs an endpoint");
  log = std::move(log_);
  sock_ = std::move(endpoint);
  lock = lock_file::occupy(sock_->entry_mutex(), log);
  ensure_folder();
}

base_op::base_op(std::shared_ptr<base> endpoint, std::shared_ptr<log_file> log_,
                 std::shared_ptr<lock_file> held) {
  if (!endpoint || !log_ || !held) {
    throw platform::NilObjectException("many_to_one op needs an endpoint and a lock");
  }
  log = std::move(log_);
  sock_ = std::move(endpoint);
  lock = std::move(held);
  ensure_folder();
}

platform::FolderItem base_op::data_file() const {
  return folder().Child("data");
}

void base_op::ensure_folder() const {
  auto dir = folder();
  if (!dir.Exists()) {
    dir.CreateFolder(platform::Access::Private);
  } else if (auto why = dir.WhyNotOwn()) {
    Refuse("channel folder", dir, *why);
  }
}

void base_op::append_to_data(std::string_view bytes) const {
  const auto file = data_file();
  auto stream = file.AppendToTextFile(platform::Access::Private);
  if (!stream) CannotOpen(file, " for appending", errno);
  // Judged through the descriptor that is written: nothing can be swapped in after the look.
  if (auto why = stream->WhyNotOwn()) Refuse("data file", file, *why);
  stream->WriteWhole(bytes);
}

std::string base_op::read_data() const {
  const auto file = data_file();
  auto stream = file.OpenAsTextFile(platform::Access::Private);
  if (!stream) CannotOpen(file, "", errno);
  if (auto why = stream->WhyNotOwn()) Refuse("data file", file, *why);
  return stream->ReadAll();
}

platform::FolderItem base_op::folder() const {
  return sock_->channel_folder();
}

}  // namespace many_to_one
