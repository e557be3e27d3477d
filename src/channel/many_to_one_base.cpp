#include "channel/many_to_one_base.h"

#include "platform/exceptions.h"

namespace many_to_one {

namespace {
const std::string kPrefix = "qem.many_to_one.";
}  // namespace

base::base(std::string id, std::shared_ptr<log_file> log_) : id_(std::move(id)) {
  if (!log_) throw platform::NilObjectException("many_to_one endpoint needs a log");
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
  if (!dir.Exists()) dir.CreateFolder();
}

platform::FolderItem base_op::folder() const {
  return sock_->channel_folder();
}

}  // namespace many_to_one
