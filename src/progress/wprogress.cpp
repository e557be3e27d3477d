#include "progress/wprogress.h"

#include "platform/exceptions.h"
#include "platform/font_metrics_measurer.h"
#include "progress/set_rect.h"

wProgress::wProgress(std::string id, std::shared_ptr<platform::Dictionary> init,
                     std::shared_ptr<message_forwarder> forwarder,
                     std::shared_ptr<platform::TextMeasurer> measurer)
    : platform::DesktopWindow(Type::FloatingGlobal),
      obj_id(std::move(id)),
      response_callback(std::move(forwarder)),
      measurer_(measurer ? std::move(measurer) : platform::FontMetricsMeasurer()) {
  Layout();
  CreateControls();
  stack.push_back(std::make_shared<progress_state>());
  update(init ? *init : platform::Dictionary());
  // Only now does the window come on the screen, with its first layout in place.
  Open();
}

// The controls go before the window that holds their widgets.
wProgress::~wProgress() = default;

void wProgress::Layout() {
  Width(530);
  Height(56);
  MinimumWidth(64);
  MinimumHeight(64);
  MaximumWidth(32000);
  MaximumHeight(32000);
  Title("");
  Resizeable(false);
  Visible(true);
}

void wProgress::CreateControls() {
  ProgressBar1_ = std::make_unique<platform::DesktopProgressBar>(*this);
  progress_helpers::set_rect(*ProgressBar1_, 20, 20, 490, 20);
  ProgressBar1_->Indeterminate(true);
  ProgressBar1_->MaximumValue(1000);
  ProgressBar1_->Value(0);
  ProgressBar1_->Visible(true);

  Label1_ = std::make_unique<platform::DesktopLabel>(*this);
  progress_helpers::set_rect(*Label1_, 20, -198, 490, 154);
  Label1_->Multiline(true);
  Label1_->TextAlignment(platform::DesktopLabel::Alignment::Center);
  Label1_->Visible(false);

  for (std::int64_t i = 0; i < kButtons; ++i) {
    auto button = std::make_unique<platform::DesktopButton>(*this, i);
    progress_helpers::set_rect(*button, -36 + 92 * i, -283, 80, 22);
    button->Caption("Cancel");
    button->Visible(false);
    button->AddPressedHandler([this](platform::DesktopButton& sender) { btn_Pressed(sender); });
    btn_[static_cast<std::size_t>(i)] = std::move(button);
  }
}

platform::DesktopButton& wProgress::btn(std::int64_t index) const {
  if (index < 0 || index >= kButtons) {
    throw platform::OutOfBoundsException("wProgress has no button " + std::to_string(index));
  }
  return *btn_[static_cast<std::size_t>(index)];
}

std::array<platform::DesktopButton*, wProgress::kButtons> wProgress::btns() const {
  std::array<platform::DesktopButton*, kButtons> result{};
  for (std::int64_t i = 0; i < kButtons; ++i) result[static_cast<std::size_t>(i)] = &btn(i);
  return result;
}

std::vector<std::shared_ptr<button_spec>> wProgress::btn_specs() const {
  std::vector<std::shared_ptr<button_spec>> result;
  result.reserve(kButtons);
  for (std::int64_t i = 0; i < kButtons; ++i) {
    result.push_back(btn_specs(i));
    result.back()->index = i;
  }
  return result;
}

std::shared_ptr<button_spec> wProgress::btn_specs(std::int64_t index) const {
  const auto& entries = state().btn_specs;
  if (index >= 0 && index < static_cast<std::int64_t>(entries.size())) {
    return entries[static_cast<std::size_t>(index)];
  }
  return button_spec::dummy(index);
}
