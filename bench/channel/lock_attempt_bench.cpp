// One lock attempt and its release, in microseconds: the cost every wait pays per attempt on top
// of its sleep. Run with --benchmark_repetitions for a median of many.

#include <benchmark/benchmark.h>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "support/private_folders.h"

namespace {

// A free lock: open and create the file, lock it, check its name, then unlink and close.
void BM_AttemptOnFreeLockAndRelease(benchmark::State& state) {
  qem_test::PrivateFolders folders;
  platform::FolderItem file(folders.root() / "tmp" / "bench.lock");
  auto log = log_file::make_null();
  for (auto _ : state) {
    auto lock = lock_file::make(file, log);
    if (!lock) state.SkipWithError("lock not obtained");
    lock.reset();
  }
}
BENCHMARK(BM_AttemptOnFreeLockAndRelease)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(15)
    ->ReportAggregatesOnly(true);

// A held lock: the attempt that fails, as waiters and probes see it.
void BM_AttemptOnHeldLock(benchmark::State& state) {
  qem_test::PrivateFolders folders;
  platform::FolderItem file(folders.root() / "tmp" / "bench.lock");
  auto log = log_file::make_null();
  auto held = lock_file::make(file, log);
  for (auto _ : state) {
    auto lock = lock_file::make(file, log);
    if (lock) state.SkipWithError("held lock obtained twice");
  }
}
BENCHMARK(BM_AttemptOnHeldLock)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(15)
    ->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
