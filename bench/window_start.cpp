// Times two programs in turns, from start to first window. Then reads their memory at rest.
//
// Usage: window_start PAIRS PROGRAM RIVAL, on a display without a window manager. Prints one line per figure,
// its fields separated by bars: name, the program's median, the rival's median, and the median of the pairs'
// ratios.
#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kSmallestWindow = 200;  // pixels; smaller windows are helpers of the toolkit
constexpr int kTimeoutMs = 20000;
constexpr auto kAtRestAfter = std::chrono::seconds(1);

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

struct Start {
  double mappedMs = 0.0;  // the window is on the screen
  double drawnMs = 0.0;   // the program has drawn in it
  double residentMb = 0.0;
};

/// Sees every window that appears on the display, and every change of its pixels.
class Screen {
 public:
  Screen() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no display");
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const xcb_query_extension_reply_t* damage = xcb_get_extension_data(connection_, &xcb_damage_id);
    if (damage == nullptr || damage->present == 0) throw std::runtime_error("no damage extension");
    damageEvent_ = damage->first_event;
    std::free(
        xcb_damage_query_version_reply(connection_, xcb_damage_query_version(connection_, 1, 1), nullptr));
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &mask);
    sync();
  }
  ~Screen() { xcb_disconnect(connection_); }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  /// Waits for a window and its first drawing. Returns the times since `begin`.
  Start waitForWindow(Clock::time_point begin) {
    Start start;
    xcb_window_t window = XCB_NONE;
    while (Clock::now() - begin < std::chrono::milliseconds(kTimeoutMs)) {
      const Reply<xcb_generic_event_t> event(next(), &std::free);
      if (!event) continue;
      const auto now = Milliseconds(Clock::now() - begin).count();
      const int type = event->response_type & 0x7F;
      if (type == XCB_MAP_NOTIFY && window == XCB_NONE) {
        window = mainWindowOf(*reinterpret_cast<const xcb_map_notify_event_t*>(event.get()));
        if (window == XCB_NONE) continue;
        start.mappedMs = now;
        const xcb_damage_damage_t damage = xcb_generate_id(connection_);
        xcb_damage_create(connection_, damage, window, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        xcb_flush(connection_);
      } else if (type == damageEvent_ + XCB_DAMAGE_NOTIFY && window != XCB_NONE) {
        start.drawnMs = now;
        return start;
      }
    }
    throw std::runtime_error("no window came");
  }

  /// Discards all events so far.
  void drain() {
    sync();
    while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) std::free(event);
  }

 private:
  xcb_generic_event_t* next() {
    if (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) return event;
    pollfd file{xcb_get_file_descriptor(connection_), POLLIN, 0};
    ::poll(&file, 1, 100);
    return xcb_poll_for_event(connection_);
  }

  xcb_window_t mainWindowOf(const xcb_map_notify_event_t& event) {
    if (event.override_redirect != 0) return XCB_NONE;
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, event.window), nullptr),
        &std::free);
    const bool isLarge =
        geometry && geometry->width >= kSmallestWindow && geometry->height >= kSmallestWindow;
    return isLarge ? event.window : xcb_window_t{XCB_NONE};
  }

  void sync() {
    std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
  }

  xcb_connection_t* connection_;
  xcb_window_t root_ = XCB_NONE;
  int damageEvent_ = 0;
};

double residentMb(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::strtod(line.c_str() + 6, nullptr) / 1024.0;
  }
  throw std::runtime_error("the program has ended");
}

void end(pid_t pid) {
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
}

pid_t spawn(const char* program) {
  std::array<char*, 2> arguments = {const_cast<char*>(program), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 1, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", 1, 0);
  pid_t pid = -1;
  const int error = posix_spawnp(&pid, program, &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error(std::string("cannot start ") + program);
  return pid;
}

Start measure(Screen& screen, const char* program) {
  screen.drain();
  const auto begin = Clock::now();
  const pid_t pid = spawn(program);
  try {
    Start start = screen.waitForWindow(begin);
    std::this_thread::sleep_for(kAtRestAfter);
    start.residentMb = residentMb(pid);
    end(pid);
    return start;
  } catch (...) {
    end(pid);
    throw;
  }
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.at(values.size() / 2);
}

struct Pair {
  Start ours;
  Start rival;
};

void print(const char* name, const char* unit, const std::vector<Pair>& pairs, double Start::*figure) {
  std::vector<double> ours;
  std::vector<double> rivals;
  std::vector<double> ratios;
  for (const Pair& pair : pairs) {
    ours.push_back(pair.ours.*figure);
    rivals.push_back(pair.rival.*figure);
    ratios.push_back(ours.back() / rivals.back());
  }
  std::printf("%s|%.1f %s|%.1f %s|%.3f\n", name, median(ours), unit, median(rivals), unit, median(ratios));
}

void run(int pairs, const char* program, const char* rival) {
  Screen screen;
  // One run each brings both into the page cache.
  measure(screen, program);
  measure(screen, rival);
  std::vector<Pair> measured;
  for (int pair = 0; pair < pairs; ++pair) {
    const Start ours = measure(screen, program);
    measured.push_back({ours, measure(screen, rival)});
  }
  print("first window on the screen", "ms", measured, &Start::mappedMs);
  print("first window drawn", "ms", measured, &Start::drawnMs);
  print("resident memory at rest", "MB", measured, &Start::residentMb);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: window_start PAIRS PROGRAM RIVAL\n", stderr);
    return 2;
  }
  try {
    run(std::max(1, std::atoi(argv[1])), argv[2], argv[3]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "window_start: %s\n", error.what());
    return 1;
  }
  return 0;
}
