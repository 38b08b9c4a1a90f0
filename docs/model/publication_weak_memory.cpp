// The publication of routes (core/routing/routing_context.h) under the C++ memory model, for Relacy: one
// writer publishes a few times while one reader runs a few cycles. Relacy tries every order of their
// accesses, and for each load every store that the memory model lets it return.
//
// The index counts up here instead of changing between 0 and 1. Its lowest bit is the program's index, so the
// accesses are the same, and the reader can tell which publication it met. Every field of table n holds n.
//
// FAULT (a number): see `Fault`. Relacy must find an error in each. Prints one line, and exits with 1 on an
// error.
#include <cstdio>

#include <relacy/relacy.hpp>

namespace {

enum Fault {
  kNone,
  kFlipIsRelaxed,       // the flip does not publish what was written before
  kIndexIsRelaxed,      // the reader's load of the index does not see what was published
  kFlipsFirst,          // the writer flips before it writes the entries
  kCountAfterFlip,      // the writer stores the count after the flip
  kWritesLiveBuffer,    // the writer fills the buffer that the reader uses
  kReadsIndexTwice,     // the reader chooses the buffer of the count and that of the entries separately
  kClaimsNeverMixed,    // no fault: claims that two publications in a cycle never mix, which is wrong
  kClaimsNeverPrevious  // no fault: claims that a cycle always uses the newest table, which is wrong
};

constexpr Fault kFault = static_cast<Fault>(FAULT);
constexpr bool has(Fault fault) {
  return kFault == fault;
}

constexpr auto kFlip = has(kFlipIsRelaxed) ? rl::mo_relaxed : rl::mo_acq_rel;
constexpr auto kLoadIndex = has(kIndexIsRelaxed) ? rl::mo_relaxed : rl::mo_acquire;

struct Buffer {
  rl::atomic<int> src;
  rl::atomic<int> dst;
  rl::atomic<int> count;
};

struct Context {
  Buffer buffers[2];
  rl::atomic<int> index;

  void initialise() {
    for (Buffer& buffer : buffers) {
      buffer.src($).store(0, rl::mo_relaxed);
      buffer.dst($).store(0, rl::mo_relaxed);
      buffer.count($).store(0, rl::mo_relaxed);
    }
    index($).store(0, rl::mo_relaxed);
  }

  void publish() {
    const int live = index($).load(rl::mo_acquire);
    const int table = live + 1;
    Buffer& target = buffers[has(kWritesLiveBuffer) ? live % 2 : table % 2];
    if (has(kFlipsFirst)) index($).fetch_add(1, kFlip);
    target.src($).store(table, rl::mo_relaxed);
    target.dst($).store(table, rl::mo_relaxed);
    if (has(kCountAfterFlip)) index($).fetch_add(1, kFlip);
    target.count($).store(table, rl::mo_relaxed);
    if (!has(kFlipsFirst) && !has(kCountAfterFlip)) index($).fetch_add(1, kFlip);
  }
};

/// What one cycle read.
struct Cycle {
  int table;
  int count;
  int src;
  int dst;

  static Cycle of(Context& context) {
    Cycle cycle{};
    cycle.table = context.index($).load(kLoadIndex);
    Buffer& live = context.buffers[cycle.table % 2];
    const int again = has(kReadsIndexTwice) ? context.index($).load(kLoadIndex) : cycle.table;
    cycle.count = context.buffers[again % 2].count($).load(rl::mo_relaxed);
    cycle.src = live.src($).load(rl::mo_relaxed);
    cycle.dst = live.dst($).load(rl::mo_relaxed);
    return cycle;
  }

  [[nodiscard]] bool isWhole() const { return count == table && src == table && dst == table; }
};

/// A field may come from a later publication into the same buffer, but never from an earlier one or from the
/// other buffer.
void checkField(int field, int table) {
  RL_ASSERT(field >= table);
  RL_ASSERT((field - table) % 2 == 0);
}

void check(const Cycle& cycle) {
  checkField(cycle.count, cycle.table);
  checkField(cycle.src, cycle.table);
  checkField(cycle.dst, cycle.table);
  if (has(kClaimsNeverMixed)) RL_ASSERT(cycle.isWhole());
}

/// `publications` publications beside `cycles` cycles, without any other order between the two threads. A
/// cycle may use the table that was live before a publication, and a later cycle never uses an earlier table.
template <int publications, int cycles>
struct Beside : rl::test_suite<Beside<publications, cycles>, 2> {
  Context context;

  void before() { context.initialise(); }

  void thread(unsigned thread) {
    if (thread == 0) {
      for (int i = 0; i < publications; ++i) context.publish();
      return;
    }
    int previous = 0;
    for (int i = 0; i < cycles; ++i) {
      const Cycle cycle = Cycle::of(context);
      check(cycle);
      RL_ASSERT(cycle.table >= previous);
      if (publications == 1) RL_ASSERT(cycle.isWhole());
      if (has(kClaimsNeverPrevious)) RL_ASSERT(cycle.table == publications);
      previous = cycle.table;
    }
  }
};

/// At most one publication falls into each of two cycles, and others come before, between and after them: the
/// threads tell each other where they are. Then each cycle sees a whole table. A thread that does not see the
/// other's message ends, which leaves out the orders in which it would have waited.
struct OneInEachCycle : rl::test_suite<OneInEachCycle, 2> {
  Context context;
  rl::atomic<int> published;
  rl::atomic<int> cyclesEnded;

  void before() {
    context.initialise();
    context.publish();
    published($).store(1, rl::mo_relaxed);
    cyclesEnded($).store(0, rl::mo_relaxed);
  }

  void write() {
    context.publish();  // falls into the first cycle, or comes before or after it
    published($).store(2, rl::mo_release);
    if (cyclesEnded($).load(rl::mo_acquire) < 1) return;
    context.publish();  // between the cycles, or falls into the second
    published($).store(3, rl::mo_release);
    if (cyclesEnded($).load(rl::mo_acquire) < 2) return;
    context.publish();
  }

  void read() {
    RL_ASSERT(Cycle::of(context).isWhole());
    cyclesEnded($).store(1, rl::mo_release);
    if (published($).load(rl::mo_acquire) < 2) return;
    const Cycle second = Cycle::of(context);
    RL_ASSERT(second.isWhole() && second.table >= 2);
    cyclesEnded($).store(2, rl::mo_release);
  }

  void thread(unsigned thread) { thread == 0 ? write() : read(); }
};

template <class Suite>
bool passes(const char* name) {
  rl::test_params params;
  params.search_type = rl::sched_full;
  params.iteration_count = ~rl::iteration_t{0};
  rl::ostringstream report;
  params.output_stream = &report;
  params.progress_stream = &report;
  const bool passed = rl::simulate<Suite>(params);
  std::printf("%s: %s, %llu executions\n", name, passed ? "no error" : "an error",
              static_cast<unsigned long long>(params.stop_iteration));
  return passed;
}

}  // namespace

int main() {
  bool passed = passes<Beside<1, 2>>("one publication beside two cycles");
  passed =
      passes<OneInEachCycle>("one publication in each cycle, and others before, between and after") && passed;
  passed = passes<Beside<2, 2>>("two publications beside two cycles") && passed;
  passed = passes<Beside<3, 1>>("three publications beside one cycle") && passed;
  return passed ? 0 : 1;
}
