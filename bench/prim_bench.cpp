// Every primitive in every body that this machine runs, on operands that fit the first cache, the
// second, and neither. One benchmark is one primitive at one size; it runs the bodies and memcpy in
// turn, so that a change of the machine's speed meets all of them, and reports the median rate of
// each in bytes read and written per second. bench/prim_table.py makes tables of it.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "bench/prim_operands.h"
#include "frame/exports/load.h"
#include "prim/dispatch.h"
#include "prim/float_mode.h"

namespace vx::bench {
namespace {

constexpr Level kLevels[] = {
    {"L1", 16 << 10, 1 << 10}, {"L2", 400 << 10, 4 << 10}, {"RAM", 64 << 20, 16 << 10}};

int turns = 31;  // at L1 and L2
int turnsFromRam = 5;
constexpr double kTurnSeconds = 200e-6;  // shorter than what another process takes at a time
constexpr double kChunkSeconds = 4e-6;   // between two looks at the clock
constexpr int kMostInPlace = 32;         // calls on the results of calls

using Clock = std::chrono::steady_clock;
double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

template <class... Args>
using Row = int (*const (&)[prim::kColumnCount])(Args...);

/// The first of the columns of each body that this machine runs.
std::vector<int> bodyColumns() {
  std::vector<int> columns;
  for (int column = 0; column <= prim::lastRunnableColumn(); ++column)
    if (columns.empty() ||
        std::strcmp(prim::columnName(column), prim::columnName(columns.back())) != 0)
      columns.push_back(column);
  return columns;
}

/// Calls of one contender, timed in chunks.
template <class Run>
double secondsPerCall(Operands& operands, bool restores, int mostCalls, const Run& run) {
  double spent = 0;
  int calls = 0, chunk = 1;
  for (bool isFirst = true; isFirst || spent < kTurnSeconds; isFirst = false) {
    if (restores) operands.restore();
    const auto start = Clock::now();
    run(chunk);
    const double seconds = secondsSince(start);
    spent += seconds;
    calls += chunk;
    const double each = std::max(seconds / chunk, 1e-9);
    chunk = std::clamp(static_cast<int>(kChunkSeconds / each), 1, mostCalls);
  }
  return spent / calls;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Copies one half of the working set to the other.
class Memcpy {
 public:
  explicit Memcpy(double footprint)
      : half_(static_cast<std::size_t>(footprint / 2) / kLine * kLine),
        memory_(2 * half_ + 2 * kLine, 1),
        begin_(memory_.data() + kLine - reinterpret_cast<std::uintptr_t>(memory_.data()) % kLine) {}
  double bytes() const { return 2.0 * static_cast<double>(half_); }
  void run(int times) {
    for (; times > 0; --times) {
      std::memcpy(begin_ + half_, begin_, half_);
      benchmark::ClobberMemory();
    }
  }

 private:
  static constexpr std::size_t kLine = 64;
  const std::size_t half_;
  std::vector<unsigned char> memory_;
  unsigned char* const begin_;
};

template <class T>
void addImage(std::string_view name, std::vector<ImageRole>& images) {
  if constexpr (std::is_pointer_v<T>) {
    using Pointed = std::remove_pointer_t<T>;
    using Element = std::remove_const_t<Pointed>;
    if constexpr (detail::isElement<Element>) {
      if (Operands::isImage(name, std::is_const_v<Pointed>))
        images.push_back({name, static_cast<int>(sizeof(Element)), !std::is_integral_v<Element>,
                          std::is_signed_v<Element>, !std::is_const_v<Pointed>});
    }
  }
}

std::vector<std::string_view> split(std::string_view arguments) {
  std::vector<std::string_view> names;
  for (std::string_view rest = arguments.substr(1); !rest.empty();) {
    const std::size_t end = rest.find_first_of(",)");
    names.push_back(rest.substr(0, end));
    rest.remove_prefix(rest[end] == ')' ? rest.size() : end + 2);
  }
  return names;
}

template <class... Args>
void measure(benchmark::State& state, const test::Prim& entry, Row<Args...> row,
             const Level& level) {
  const prim::FloatModeGuard floatMode;
  const std::vector<std::string_view> names = split(entry.arguments);
  std::vector<ImageRole> images;
  [&]<std::size_t... i>(std::index_sequence<i...>) { (addImage<Args>(names[i], images), ...); }
  (std::index_sequence_for<Args...>());
  Operands operands(entry, images, level);
  // braces: from left to right
  const auto args = [&]<std::size_t... i>(std::index_sequence<i...>) {
    return std::tuple<Args...>{operands.template argument<Args>(names[i])...};
  }
  (std::index_sequence_for<Args...>());

  Memcpy copy(operands.footprint());
  const std::vector<int> columns = bodyColumns();
  for (const int column : columns) {
    operands.restore();
    if (const int status = std::apply(row[column], args); status != 0) {
      state.SkipWithError(("status " + std::to_string(status)).c_str());
      return;
    }
  }
  copy.run(1);
  // exponentials of exponentials soon overflow
  const bool isSteep = entry.has("Exp") || entry.has("Ln");
  const int mostCalls = isSteep ? 1 : operands.inPlace() ? kMostInPlace : 1 << 20;
  std::vector<std::vector<double>> seconds(columns.size() + 1);
  for (auto _ : state) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const auto body = row[columns[i]];
      seconds[i].push_back(secondsPerCall(operands, operands.inPlace(), mostCalls, [&](int times) {
        for (; times > 0; --times) std::apply(body, args);
      }));
    }
    seconds.back().push_back(
        secondsPerCall(operands, false, 1 << 20, [&](int times) { copy.run(times); }));
    state.SetIterationTime(seconds[columns.size() - 1].back());
  }
  for (std::size_t i = 0; i < columns.size(); ++i)
    state.counters[prim::columnName(columns[i])] = operands.traffic() / median(seconds[i]);
  state.counters["memcpy"] = copy.bytes() / median(seconds.back());
  state.SetLabel(std::to_string(operands.width()) + " x " + std::to_string(operands.height()));
}

template <class... Args>
void registerPrim(const test::Prim& entry, Row<Args...> row) {
  for (const Level& level : kLevels)
    benchmark::RegisterBenchmark((std::string(entry.name) + "/" + level.name).c_str(),
                                 [entry, &row, &level](benchmark::State& state) {
                                   measure<Args...>(state, entry, row, level);
                                 })
        ->Iterations(level.name[0] == 'R' ? turnsFromRam : turns)
        ->UseManualTime();
}

void registerAll() {
#define VX_PRIM(name, params, args) registerPrim(readCall(#name, #args), prim::table::name);
#define VX_PRIM_BLOCK(name, params, args)  // see noise_bench
#include "prim/prim_list.def"
#undef VX_PRIM
}

}  // namespace
}  // namespace vx::bench

int main(int argc, char** argv) {
  vx::attachProcess();
  benchmark::Initialize(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    const int count = std::strncmp(argv[i], "--turns=", 8) == 0 ? std::atoi(argv[i] + 8) : 0;
    if (count < 1) {
      std::fprintf(stderr, "unknown argument %s; --turns=N and Google Benchmark's\n", argv[i]);
      return 2;
    }
    vx::bench::turns = vx::bench::turnsFromRam = count;
  }
  vx::bench::registerAll();
  benchmark::RunSpecifiedBenchmarks();
}
