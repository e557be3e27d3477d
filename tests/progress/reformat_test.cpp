// What only a window can show of its layout: reformat puts the controls where the layout says,
// writes only what differs, hides the window before it changes a control and shows it only once
// every control is in place.

#include <gtest/gtest.h>

#include <QEvent>
#include <QObject>
#include <QWidget>
#include <functional>

#include "progress/progress_layout.h"
#include "progress_fixture.h"

namespace {

using qem_test::Command;

const char* const kCreate =
    R"({"style":3,"title":"Backup","message":"Copying","progress":0.25,)"
    R"("btn_spec":[{"id":"s","text":"Stop"},{"id":"k","text":"Skip file"}]})";

progress_layout::rect At(const platform::DesktopUIControl& c) {
  return {c.Left(), c.Top(), c.Width(), c.Height()};
}

class OnShowOrHide : public QObject {
 public:
  explicit OnShowOrHide(std::function<void()> seen) : seen_(std::move(seen)) {}
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Show || event->type() == QEvent::Hide) seen_();
    return false;
  }

 private:
  std::function<void()> seen_;
};

TEST(Reformat, AppliesTheLayoutWithGuardedWritesInOrder) {
  const auto measurer = std::make_shared<qem_test::TableMeasurer>();
  const auto make = [&] { return qem_test::MakeWindow(kCreate, measurer); };

  // The controls stand where the layout says.
  auto w = make();
  const auto r = progress_layout::compute(w->state(), w->Width(), *measurer);
  EXPECT_EQ(At(w->Label1()), r.label);
  EXPECT_EQ(At(w->btn(0)), r.buttons[0].place);
  EXPECT_EQ(At(w->btn(1)), r.buttons[1].place);
  EXPECT_EQ(At(w->ProgressBar1()), r.bar);
  EXPECT_EQ(w->Height(), r.height);

  // Only what differs is written; letter case is a difference in captions alone.
  const std::pair<const char*, long> cases[] = {
      {R"("progress":0.5)", 1},  // the bar's Value, nothing else
      {R"("progress":-1)", 1},   // Indeterminate; the scale and value stay
      {R"("style":3,"title":"BACKUP","message":"COPYING","progress":0.25)", 0},
      {R"("btn_spec":[{"id":"s","text":"STOP"},{"id":"k","text":"Skip file"}])", 1},
  };
  for (const auto& [keys, writes] : cases) {
    auto fresh = make();
    qem_test::TakeWrites(*fresh);
    fresh->cmd(Command(std::string(R"({"cmd":"set",)") + keys + "}"));
    EXPECT_EQ(qem_test::TakeWrites(*fresh), writes) << keys;
  }

  // Hiding comes before any control changes and showing after the last: whenever the window
  // goes off or on the screen, it has the look of a whole state.
  std::vector<std::string> seen;
  OnShowOrHide filter([&] { seen.push_back(qem_test::LookOf(*w)); });
  w->Widget()->installEventFilter(&filter);
  const std::string before = qem_test::LookOf(*w);
  w->cmd(Command(R"({"cmd":"push","style":5,"title":"Backup","message":"Replace?",)"
                 R"("btn_spec":[{"text":"Yes"}]})"));
  w->cmd(Command(R"({"cmd":"set","style":3,"progress":0.5})"));
  EXPECT_EQ(seen, (std::vector<std::string>{before, qem_test::LookOf(*w)}));
}

}  // namespace
