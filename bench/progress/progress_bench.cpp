// The cost of laying out a progress window with real fonts, offscreen: reformat after a change
// of the progress alone and after a change of every key, and the same through a "set" command.
// Each reports the control writes it makes per layout. Run with QT_QPA_PLATFORM=offscreen.

#include <benchmark/benchmark.h>

#include <memory>

#include "json/tree_dictionary.h"
#include "platform/run_loop.h"
#include "progress/wprogress.h"

namespace {

class NoReplies : public message_forwarder {
 public:
  void write(const std::string&) override {}
};

long TotalWrites(const wProgress& w) {
  long total = w.Writes().Total() + w.ProgressBar1().Writes().Total() + w.Label1().Writes().Total();
  for (const auto* b : w.btns()) total += b->Writes().Total();
  return total;
}

void ResetWrites(wProgress& w) {
  w.ResetWrites();
  w.ProgressBar1().ResetWrites();
  w.Label1().ResetWrites();
  for (auto* b : w.btns()) b->ResetWrites();
}

const char* const kCreate =
    R"({"style":3,"title":"Backup","message":"Copying 1,204 files to the backup disk",)"
    R"("progress":0.25,"btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})";
const char* const kOther =
    R"({"cmd":"set","style":1,"title":"Question","message":"A file named report.pdf is )"
    R"(already there. Replace it?","progress":-1,"btn_spec":[{"id":"yes","text":"Replace"},)"
    R"({"id":"no","text":"Keep both"},{"id":"cancel","text":"Cancel"}]})";

std::unique_ptr<wProgress> MakeWindow() {
  auto w = std::make_unique<wProgress>("b1", JSON::JSONStringToTreeDictionary(kCreate),
                                       std::make_shared<NoReplies>());
  w->Show();
  return w;
}

void Finish(benchmark::State& state, wProgress& w) {
  state.counters["writes"] =
      benchmark::Counter(static_cast<double>(TotalWrites(w)), benchmark::Counter::kAvgIterations);
}

void BM_ReformatProgressOnly(benchmark::State& state) {
  auto w = MakeWindow();
  ResetWrites(*w);
  bool flip = false;
  for (auto _ : state) {
    w->state().progress = (flip = !flip) ? 0.5 : 0.25;
    w->reformat();
  }
  Finish(state, *w);
}

void BM_ReformatEveryKeyChanged(benchmark::State& state) {
  auto w = MakeWindow();
  // Two states that differ in every field, swapped in under the layout.
  const auto first = w->stack.back();
  w->cmd(JSON::JSONStringToTreeDictionary(R"({"cmd":"push"})"));
  w->cmd(JSON::JSONStringToTreeDictionary(kOther));
  const auto second = w->stack.back();
  w->stack.pop_back();
  ResetWrites(*w);
  bool flip = false;
  for (auto _ : state) {
    w->stack.back() = (flip = !flip) ? second : first;
    w->reformat();
  }
  Finish(state, *w);
}

void BM_SetCommandProgressOnly(benchmark::State& state) {
  auto w = MakeWindow();
  const auto a = JSON::JSONStringToTreeDictionary(R"({"cmd":"set","progress":0.5})");
  const auto b = JSON::JSONStringToTreeDictionary(R"({"cmd":"set","progress":0.25})");
  ResetWrites(*w);
  bool flip = false;
  for (auto _ : state) w->cmd((flip = !flip) ? a : b);
  Finish(state, *w);
}

void BM_SetCommandEveryKey(benchmark::State& state) {
  auto w = MakeWindow();
  auto back = JSON::JSONStringToTreeDictionary(kCreate);
  back->SetValue("cmd", "set");
  const auto other = JSON::JSONStringToTreeDictionary(kOther);
  ResetWrites(*w);
  bool flip = false;
  for (auto _ : state) w->cmd((flip = !flip) ? other : back);
  Finish(state, *w);
}

BENCHMARK(BM_ReformatProgressOnly)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ReformatEveryKeyChanged)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SetCommandProgressOnly)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SetCommandEveryKey)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  platform::DesktopApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
