// A driver plugin for the private PipeWire server. It starts a cycle 1 ms after all nodes have finished the
// last one, however long that took, so no node is ever late. Without the pause, a node that was late once
// would stay a cycle behind for ever: its finish signal does not name its cycle and would count for the next
// one. With the property tolvane.steady it also keeps to the machine's clock: it starts no cycle early.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <new>

#include <pipewire/version.h>
#include <spa/node/node.h>
#include <spa/node/utils.h>
#include <spa/support/loop.h>
#include <spa/support/plugin.h>
#include <spa/support/system.h>
#include <spa/utils/names.h>

#include "hal/pipewire/pipewire_headers.h"

namespace {

constexpr std::uint64_t kPauseNs = 1'000'000;
// If links are activated while the graph runs, a cycle may never finish.
constexpr std::uint64_t kPatienceNs = 3'000'000'000;
// In PipeWire 1.0 and later, a cycle may also never finish when the quantum changes. A short wait is enough
// then, as tests count frames only after the change.
constexpr std::uint64_t kPatienceAtAChangeNs = 100'000'000;
constexpr unsigned kCyclesOfAChange = 20;
// Clock flag of a process() call that only cleans up after an unfinished cycle.
constexpr std::uint32_t kRecoverFlag = 1U << 1;

class PatientDriver {
 public:
  PatientDriver(spa_loop* loop, spa_system* system, bool isSteady)
      : loop_(loop), system_(system), isSteady_(isSteady) {
    static const spa_node_methods kMethods = [] {
      spa_node_methods methods{};
      methods.version = SPA_VERSION_NODE_METHODS;
      methods.add_listener = [](void* driver, spa_hook* hook, const spa_node_events* events, void* data) {
        return of(driver).addListener(hook, events, data);
      };
      methods.set_callbacks = [](void* driver, const spa_node_callbacks* callbacks, void* data) {
        of(driver).callbacks_ = {callbacks, data};
        return 0;
      };
      methods.set_io = [](void* driver, std::uint32_t id, void* area, std::size_t /*bytes*/) {
        return of(driver).setIo(id, area);
      };
      methods.send_command = [](void* driver, const spa_command* command) {
        return of(driver).onCommand(SPA_NODE_COMMAND_ID(command));
      };
      methods.process = [](void* driver) { return of(driver).onFinished(); };
      return methods;
    }();
    node_.iface = {SPA_TYPE_INTERFACE_Node, SPA_VERSION_NODE, {&kMethods, this}};
    spa_hook_list_init(&hooks_);
    timer_.data = this;
    timer_.fd = spa_system_timerfd_create(system_, CLOCK_MONOTONIC, SPA_FD_CLOEXEC | SPA_FD_NONBLOCK);
    timer_.mask = SPA_IO_IN;
    timer_.func = [](spa_source* source) { of(source->data).onTimer(); };
    spa_loop_add_source(loop_, &timer_);
  }

  ~PatientDriver() {
    const auto remove = [](spa_loop* loop, bool, std::uint32_t, const void*, std::size_t, void* driver) {
      return spa_loop_remove_source(loop, &of(driver).timer_);
    };
    spa_loop_invoke(loop_, remove, 0, nullptr, 0, true, this);
    spa_system_close(system_, timer_.fd);
  }

  PatientDriver(const PatientDriver&) = delete;
  PatientDriver& operator=(const PatientDriver&) = delete;

  [[nodiscard]] spa_node* node() noexcept { return &node_; }

 private:
  static PatientDriver& of(void* driver) { return *static_cast<PatientDriver*>(driver); }

  int addListener(spa_hook* hook, const spa_node_events* events, void* data) {
    spa_hook_list others;
    spa_hook_list_isolate(&hooks_, &others, hook, events, data);
    const spa_dict_item item{"node.driver", "true"};
    const spa_dict properties{0, 1, &item};
    spa_node_info info{};
    info.change_mask = SPA_NODE_CHANGE_MASK_FLAGS | SPA_NODE_CHANGE_MASK_PROPS;
    info.flags = SPA_NODE_FLAG_RT;
    info.props = const_cast<spa_dict*>(&properties);
    spa_node_emit_info(&hooks_, &info);
    spa_hook_list_join(&hooks_, &others);
    return 0;
  }

  int setIo(std::uint32_t id, void* area) {
    if (id == SPA_IO_Clock) clock_ = static_cast<spa_io_clock*>(area);
    if (id == SPA_IO_Position) position_ = static_cast<spa_io_position*>(area);
    if (isStarted_) wakeAt(nowNs());  // this driver may now have to drive the cycle
    return id == SPA_IO_Clock || id == SPA_IO_Position ? 0 : -ENOENT;
  }

  int onCommand(std::uint32_t command) {
    const bool starts = command == SPA_NODE_COMMAND_Start;
    const bool stops = command == SPA_NODE_COMMAND_Pause || command == SPA_NODE_COMMAND_Suspend;
    if (!starts && !stops) return -ENOTSUP;
    isStarted_ = starts;
    wakeAt(starts ? nowNs() : 0);
    return 0;
  }

  void onTimer() {
    std::uint64_t expirations = 0;
    if (spa_system_timerfd_read(system_, timer_.fd, &expirations) < 0) return;
    if (clock_ == nullptr || position_ == nullptr || position_->clock.id != clock_->id) return;
    advance();
    isFinished_ = false;
    spa_node_call_ready(&callbacks_, SPA_STATUS_HAVE_DATA | SPA_STATUS_NEED_DATA);
    if (!isFinished_)
      wakeAt(nowNs() + (sinceChange_ < kCyclesOfAChange ? kPatienceAtAChangeNs : kPatienceNs));
  }

  void advance() {
#if PW_CHECK_VERSION(1, 0, 0)
    const std::uint64_t frames = clock_->target_duration;
    sinceChange_ = frames == frames_ ? sinceChange_ + 1 : 0;
    frames_ = frames;
    clock_->rate = clock_->target_rate;
    clock_->position += clock_->duration;
#else
    const std::uint64_t frames = clock_->duration;
    clock_->position += frames;
#endif
    clock_->duration = frames;
    clock_->nsec = nowNs();
    clock_->next_nsec = clock_->nsec + frames * SPA_NSEC_PER_SEC / clock_->rate.denom;
    clock_->delay = 0;
    clock_->rate_diff = 1.0;
  }

  int onFinished() {
    if ((clock_->flags & kRecoverFlag) == 0) {
      isFinished_ = true;
      const std::uint64_t soon = nowNs() + kPauseNs;
      wakeAt(isSteady_ ? std::max(soon, clock_->next_nsec) : soon);
    }
    return SPA_STATUS_HAVE_DATA | SPA_STATUS_NEED_DATA;
  }

  [[nodiscard]] std::uint64_t nowNs() const {
    timespec now{};
    spa_system_clock_gettime(system_, CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(SPA_TIMESPEC_TO_NSEC(&now));
  }

  /// Sets the timer; 0 disarms it.
  void wakeAt(std::uint64_t timeNs) {
    itimerspec timer{};
    timer.it_value.tv_sec = static_cast<time_t>(timeNs / SPA_NSEC_PER_SEC);
    timer.it_value.tv_nsec = static_cast<long>(timeNs % SPA_NSEC_PER_SEC);
    spa_system_timerfd_settime(system_, timer_.fd, SPA_FD_TIMER_ABSTIME, &timer, nullptr);
  }

  spa_loop* loop_;
  spa_system* system_;
  bool isSteady_;
  spa_node node_{};
  spa_hook_list hooks_{};
  spa_callbacks callbacks_{};
  spa_source timer_{};
  spa_io_clock* clock_ = nullptr;
  spa_io_position* position_ = nullptr;
  std::uint64_t frames_ = 0;  // of the last cycle
  unsigned sinceChange_ = kCyclesOfAChange;
  bool isStarted_ = false;
  bool isFinished_ = false;
};

/// The server's handle for this plugin: the server's own header, followed by the driver.
struct Handle {
  spa_handle head;
  PatientDriver driver;
};

int getInterface(spa_handle* handle, const char* type, void** interface) {
  if (!spa_streq(type, SPA_TYPE_INTERFACE_Node)) return -ENOENT;
  *interface = reinterpret_cast<Handle*>(handle)->driver.node();
  return 0;
}

int clear(spa_handle* handle) {
  reinterpret_cast<Handle*>(handle)->driver.~PatientDriver();
  return 0;
}

int init(const spa_handle_factory* /*factory*/, spa_handle* handle, const spa_dict* properties,
         const spa_support* support, std::uint32_t supports) {
  auto* const loop = static_cast<spa_loop*>(spa_support_find(support, supports, SPA_TYPE_INTERFACE_DataLoop));
  auto* const system =
      static_cast<spa_system*>(spa_support_find(support, supports, SPA_TYPE_INTERFACE_DataSystem));
  if (loop == nullptr || system == nullptr) return -EINVAL;
  auto* const whole = reinterpret_cast<Handle*>(handle);
  whole->head.get_interface = getInterface;
  whole->head.clear = clear;
  const bool isSteady = properties != nullptr && spa_dict_lookup(properties, "tolvane.steady") != nullptr;
  new (&whole->driver) PatientDriver(loop, system, isSteady);
  return 0;
}

std::size_t sizeOf(const spa_handle_factory* /*factory*/, const spa_dict* /*properties*/) {
  return sizeof(Handle);
}

int listInterfaces(const spa_handle_factory* /*factory*/, const spa_interface_info** info,
                   std::uint32_t* index) {
  static const spa_interface_info kInfo{SPA_TYPE_INTERFACE_Node};
  if (*index != 0) return 0;
  *info = &kInfo;
  ++*index;
  return 1;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int spa_handle_factory_enum(
    const spa_handle_factory** factory, std::uint32_t* index) {
  static const spa_handle_factory kFactory{
      SPA_VERSION_HANDLE_FACTORY, "tolvane.patient.driver", nullptr, sizeOf, init, listInterfaces};
  if (*index != 0) return 0;
  *factory = &kFactory;
  ++*index;
  return 1;
}
