#include "progress/button_record.h"

#include "platform/exceptions.h"

std::shared_ptr<button_spec> button_spec::dummy(std::int64_t index) {
  // Made on the first call and kept until the process ends; shared by all windows.
  static std::vector<std::shared_ptr<button_spec>> list;
  while (static_cast<std::int64_t>(list.size()) <= index) {
    auto entry = std::make_shared<button_spec>();
    entry->index = static_cast<std::int64_t>(list.size());
    list.push_back(std::move(entry));
  }
  return list.at(static_cast<std::size_t>(index));
}

std::shared_ptr<button_spec> button_spec::from_dictionary(const platform::Dictionary& d) {
  auto entry = std::make_shared<button_spec>();
  entry->id = d.Lookup("id", "").StringValue();
  entry->text = d.Lookup("text", "").StringValue();
  entry->visible = true;
  return entry;
}

std::vector<std::shared_ptr<button_spec>> button_spec::from_dictionary_array(
    const std::shared_ptr<platform::ObjectArray>& a, const skip_handler& skipped) {
  std::vector<std::shared_ptr<button_spec>> result;
  if (!a) return result;
  for (std::size_t i = 0; i < a->size(); ++i) {
    const platform::Variant& element = (*a)[i];
    try {
      if (!element.IsDictionary()) throw platform::TypeMismatchException("no object");
      result.push_back(from_dictionary(*element.DictionaryValue()));
    } catch (const platform::TypeMismatchException&) {
      if (skipped) skipped(i);
    }
  }
  return result;
}
