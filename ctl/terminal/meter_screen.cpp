// The meters as a full-screen picture on the terminal, drawn with ncurses.
#define NCURSES_NOMACROS 1
#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cwchar>
#include <map>
#include <utility>

#include <curses.h>
#include <poll.h>
#include <unistd.h>

#include "ctl/terminal/decimal.h"
#include "ctl/terminal/meter_view.h"

namespace tolvane::ctl {

namespace {

constexpr double kBottomDb = -60.0;  // an empty bar
constexpr double kFallDbPerShow = 1.0;
constexpr std::chrono::milliseconds kShowEvery{50};

constexpr int kNarrowestLabel = 9;
constexpr int kTextWidth = 13;  // " -18.0 dBFS  "

enum ColourPair : short { kQuiet = 1, kLoud = 2, kOver = 3 };

/// A meter's shown level in dB: rises at once, falls kFallDbPerShow at a time.
class Ballistics {
 public:
  double follow(const std::string& label, float peak) {
    const double now = peak > 0.0F ? 20.0 * std::log10(static_cast<double>(peak)) : -HUGE_VAL;
    double& shown = levels_.try_emplace(label, -HUGE_VAL).first->second;
    shown = std::isnan(now) ? HUGE_VAL : std::max(now, shown - kFallDbPerShow);
    if (shown < kBottomDb && now < shown) shown = now;
    return shown;
  }

 private:
  std::map<std::string, double> levels_;
};

/// The number of columns that the text takes on the terminal, up to the end or to `limit` columns. Sets `end`
/// to the byte where that is.
int columnsOf(const std::string& text, int limit, std::size_t& end) {
  std::mbstate_t state{};
  int columns = 0;
  for (end = 0; end < text.size();) {
    wchar_t character = 0;
    const std::size_t bytes = std::mbrtowc(&character, &text[end], text.size() - end, &state);
    const bool isValid = bytes != 0 && bytes <= text.size();
    const int width = isValid ? std::max(::wcwidth(character), 0) : 1;
    if (columns + width > limit) break;
    columns += width;
    end += isValid ? bytes : 1;
    if (!isValid) state = {};
  }
  return columns;
}

std::string levelText(double db) {
  if (std::isinf(db)) return db > 0 ? "inf" : "-inf";
  return decibels(static_cast<float>(std::pow(10.0, db / 20.0)));
}

/// The layout of the meters: column by column, top to bottom.
struct Grid {
  int firstRow = 2;
  int rows = 1;
  int columnWidth = 0;
  int columns = 1;

  static Grid of(std::size_t meters, int screenRows, int screenColumns) {
    constexpr int kNarrowest = 24;
    Grid grid;
    grid.rows = std::max(1, screenRows - grid.firstRow - 2);
    const int needed = static_cast<int>((meters + static_cast<std::size_t>(grid.rows) - 1) /
                                        static_cast<std::size_t>(grid.rows));
    grid.columns = std::clamp(needed, 1, std::max(1, screenColumns / kNarrowest));
    grid.columnWidth = screenColumns / grid.columns;
    return grid;
  }

  [[nodiscard]] std::size_t capacity() const {
    return static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  }
};

class MeterScreen : public MeterView {
 public:
  explicit MeterScreen(SCREEN* screen) : screen_(screen) {
    set_term(screen_);
    cbreak();
    noecho();
    nodelay(stdscr, TRUE);
    keypad(stdscr, TRUE);
    curs_set(0);
    if (has_colors()) {
      start_color();
      use_default_colors();
      init_pair(kQuiet, COLOR_GREEN, -1);
      init_pair(kLoud, COLOR_YELLOW, -1);
      init_pair(kOver, COLOR_RED, -1);
    }
  }
  MeterScreen(const MeterScreen&) = delete;
  MeterScreen& operator=(const MeterScreen&) = delete;
  ~MeterScreen() override {
    endwin();
    delscreen(screen_);
  }

  [[nodiscard]] std::chrono::milliseconds interval() const noexcept override { return kShowEvery; }

  void show(const MeterPicture& picture) override {
    erase();
    const std::string counts = "   cycles " + std::to_string(picture.cycles) + "   overloads " +
                               std::to_string(picture.overloads) + "   q ends";
    attr_on(WA_BOLD, nullptr);
    mvaddnstr(0, 0, picture.deviceName.c_str(), std::max(0, COLS - static_cast<int>(counts.size())));
    attr_off(WA_BOLD, nullptr);
    addnstr(counts.c_str(), COLS);
    showMeters(picture);
    if (!picture.message.empty()) mvaddnstr(LINES - 1, 0, firstLine(picture.message).c_str(), COLS);
    refresh();
  }

  /// True after the key q, or if the terminal was closed.
  [[nodiscard]] bool endAsked() override {
    pollfd terminal{STDOUT_FILENO, 0, 0};
    if (::poll(&terminal, 1, 0) > 0) return true;
    for (int key = getch(); key != ERR; key = getch()) {
      if (key == 'q' || key == 'Q') return true;
    }
    return false;
  }

 private:
  static std::string firstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

  void showMeters(const MeterPicture& picture) {
    std::vector<MeterReading> readings = picture.inputs;
    readings.insert(readings.end(), picture.outputs.begin(), picture.outputs.end());
    const Grid grid = Grid::of(readings.size(), LINES, COLS);
    const int labelWidth = labelWidthOf(readings, grid.columnWidth);
    for (std::size_t i = 0; i < readings.size(); ++i) {
      const double level = ballistics_.follow(readings[i].label, readings[i].peak);
      if (i >= grid.capacity()) continue;
      const int at = static_cast<int>(i);
      showMeter(grid.firstRow + at % grid.rows, at / grid.rows * grid.columnWidth, grid.columnWidth,
                labelWidth, readings[i].label, level);
    }
    if (readings.size() > grid.capacity()) {
      const std::size_t hidden = readings.size() - grid.capacity();
      mvprintw(LINES - 2, 0, "%zu more meters do not fit the window", hidden);
    }
  }

  /// Wide enough for every label and a blank, if that leaves room for the bars.
  static int labelWidthOf(const std::vector<MeterReading>& readings, int columnWidth) {
    constexpr int kNarrowestBar = 10;
    int widest = kNarrowestLabel - 1;
    std::size_t end = 0;
    for (const MeterReading& reading : readings)
      widest = std::max(widest, columnsOf(reading.label, COLS, end));
    return std::clamp(columnWidth - kTextWidth - kNarrowestBar, kNarrowestLabel, widest + 1);
  }

  static void showMeter(int row, int column, int width, int labelWidth, const std::string& label,
                        double level) {
    std::size_t end = 0;
    columnsOf(label, labelWidth - 1, end);
    mvaddnstr(row, column, label.c_str(), static_cast<int>(end));
    const int cells = std::max(0, width - labelWidth - kTextWidth);
    const double part = std::clamp((level - kBottomDb) / -kBottomDb, 0.0, 1.0);
    move(row, column + labelWidth);
    attr_set(WA_REVERSE, level >= 0.0 ? kOver : level >= -6.0 ? kLoud : kQuiet, nullptr);
    const auto filled = std::lround(part * cells);
    for (long i = 0; i < filled; ++i) addch(' ');
    attr_set(WA_NORMAL, 0, nullptr);
    mvprintw(row, column + labelWidth + cells, " %5s dBFS", levelText(level).c_str());
  }

  SCREEN* screen_;
  Ballistics ballistics_;
};

}  // namespace

std::unique_ptr<MeterView> makeMeterScreen() {
  if (::isatty(STDOUT_FILENO) != 1) return nullptr;
  // ncurses needs the user's character set for device names. LC_NUMERIC keeps the decimal point.
  std::setlocale(LC_CTYPE, "");
  std::fflush(stdout);
  SCREEN* screen = newterm(nullptr, stdout, stdin);
  if (screen == nullptr) return nullptr;
  auto view = std::make_unique<MeterScreen>(screen);
  const bool canMoveCursor = tigetstr("cup") != nullptr;  // TERM=dumb cannot
  return canMoveCursor ? std::move(view) : nullptr;
}

}  // namespace tolvane::ctl
