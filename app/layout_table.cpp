#include "app/layout_table.h"

#include <array>

namespace tolvane {
namespace {

using Kind = ControlKind;
using Font = FontChoice;

constexpr const char* kHowItWorks =
    "The app registers a HAL IOProc directly with Core Audio — the same low-level mechanism your DAW uses.\n"
    "No added latency beyond the device buffer size. Changes to the patch table take effect immediately "
    "(hot-swap, no restart).\n"
    "\n"
    "SETUP:\n"
    "  1. In Audio MIDI Setup, create an Aggregate Device combining your audio interfaces (set clock source "
    "and sample rate).\n"
    "  2. Select that Aggregate Device in the dropdown above.\n"
    "  3. Click cells in the Patch Matrix (or use Add Connection) to define your routes.\n"
    "  4. Press ▶ Start. Done — audio is flowing.\n"
    "\n"
    "PERMISSIONS:  First launch → System Settings → Privacy & Security → Microphone → enable this app.\n"
    "SAMPLE RATE:  The Aggregate Device must be running when you start. Match your DAW session sample rate.\n"
    "CHANNELS:     Supports any Core Audio device — 2 to 128+ channels. All available channels are shown in "
    "the matrix.\n"
    "HOT CHANGES:  Add/remove connections while running — changes apply within one buffer cycle with no "
    "clicks or dropouts.";

// Shorthands for frequent kinds of rows.
constexpr LayoutRow label(const char* name, QRect frame, const char* text, Font font, int pixels,
                          double white) {
  return {.kind = Kind::label,
          .name = name,
          .frame = frame,
          .text = text,
          .font = font,
          .fontPixels = pixels,
          .white = white};
}

constexpr LayoutRow heading(const char* name, QRect frame, const char* text) {
  return label(name, frame, text, Font::bold, 9, 0.42);
}

constexpr LayoutRow plainView(const char* name, QRect frame, double white) {
  return {.kind = Kind::plainView, .name = name, .frame = frame, .white = white};
}

constexpr LayoutRow textField(const char* name, QRect frame, const char* value, const char* accessibleName) {
  return {
      .kind = Kind::textField, .name = name, .frame = frame, .text = value, .accessibleName = accessibleName};
}

constexpr LayoutRow smallButton(const char* name, QRect frame, const char* text, const char* action,
                                const char* accessibleName) {
  return {.kind = Kind::smallButton,
          .name = name,
          .frame = frame,
          .text = text,
          .font = Font::system,
          .fontPixels = 11,
          .action = action,
          .accessibleName = accessibleName};
}

constexpr std::array kRows{
    plainView("topBar", {0, 685, 920, 35}, 0.08),
    label("headline", {18, 693, 300, 20}, "TOLVANE", Font::bold, 15, 1.0),
    label("subtitle", {320, 696, 420, 14}, "Core Audio HAL Channel Router  •  real-time, zero-latency",
          Font::system, 10, 0.45),
    LayoutRow{.kind = Kind::statusDot,
              .name = "statusDot",
              .frame = {820, 697, 10, 10},
              .accessibleName = "Engine stopped"},
    LayoutRow{.kind = Kind::pushButton,
              .name = "startStopButton",
              .frame = {836, 689, 72, 26},
              .text = "▶  Start",
              .action = "startStopTapped",
              .accessibleName = "Start"},
    heading("deviceHeading", {18, 660, 140, 14}, "AUDIO DEVICE"),
    LayoutRow{.kind = Kind::popUpButton,
              .name = "devicePopup",
              .frame = {18, 636, 400, 24},
              .action = "deviceSelected",
              .accessibleName = "Audio device"},
    smallButton("refreshButton", {426, 636, 84, 24}, "↺ Refresh", "refreshDevices", "Refresh devices"),
    label("inputCountLabel", {524, 640, 130, 16}, "Inputs: —", Font::system, 10, 0.55),
    label("outputCountLabel", {666, 640, 130, 16}, "Outputs: —", Font::system, 10, 0.55),
    heading("matrixHeading", {18, 614, 400, 14}, "PATCH MATRIX   (click cell = toggle route)"),
    label("matrixLegend", {340, 614, 380, 14}, "IN ↓ rows   OUT → columns     🟢 = active route",
          Font::system, 9, 0.4),
    LayoutRow{.kind = Kind::patchMatrix,
              .name = "patchMatrixView",
              .frame = {18, 310, 576, 298},
              .accessibleName = "Patch matrix"},
    heading("connectionsHeading", {610, 614, 280, 14}, "ACTIVE CONNECTIONS"),
    LayoutRow{.kind = Kind::scrollView,
              .name = "connectionsScrollView",
              .frame = {610, 310, 292, 298},
              .accessibleName = "Active connections"},
    LayoutRow{.kind = Kind::tableView,
              .name = "connectionsTableView",
              .frame = {},
              .white = 0.14,
              .accessibleName = "Active connections"},
    heading("addHeading", {18, 285, 200, 14}, "ADD CONNECTION"),
    label("inputChannelCaption", {18, 260, 22, 20}, "In:", Font::system, 10, 0.65),
    textField("inputChannelField", {42, 258, 42, 22}, "1", "Input channel"),
    label("outputChannelCaption", {92, 260, 28, 20}, "Out:", Font::system, 10, 0.65),
    textField("outputChannelField", {122, 258, 42, 22}, "33", "Output channel"),
    label("gainCaption", {172, 260, 34, 20}, "Gain:", Font::system, 10, 0.65),
    textField("gainField", {208, 258, 40, 22}, "1.0", "Gain, linear"),
    smallButton("addButton", {256, 256, 54, 26}, "Add", "addConnection", "Add connection"),
    smallButton("removeButton", {318, 256, 66, 26}, "Remove", "removeConnection",
                "Remove selected connection"),
    smallButton("clearButton", {392, 256, 54, 26}, "Clear", "clearConnections", "Clear all connections"),
    heading("quickPatchHeading", {610, 285, 200, 14}, "QUICK PATCH"),
    smallButton("lastOutputsButton", {610, 256, 160, 26}, "In 1,2 → Last 2 Outs", "presetStereoToHeadphones",
                "Preset: inputs 1 and 2 to the last two outputs"),
    smallButton("thruButton", {778, 256, 124, 26}, "In 1→1, 2→2 (thru)", "presetThru12",
                "Preset: input 1 to output 1, input 2 to output 2"),
    LayoutRow{.kind = Kind::box, .name = "informationBox", .frame = {18, 56, 884, 192}, .white = 0.155},
    heading("informationHeading", {30, 224, 200, 14}, "HOW IT WORKS"),
    LayoutRow{.kind = Kind::textBlock,
              .name = "informationText",
              .frame = {30, 70, 862, 156},
              .text = kHowItWorks,
              .font = Font::monospaced,
              .fontPixels = 10,
              .white = 0.58},
    plainView("bottomBar", {0, 0, 920, 56}, 0.08),
    smallButton("saveButton", {18, 16, 110, 26}, "💾 Save Patch", "savePatch", "Save patch"),
    smallButton("loadButton", {136, 16, 110, 26}, "📂 Load Patch", "loadPatch", "Load patch"),
    LayoutRow{.kind = Kind::lineLabel,
              .name = "statusLabel",
              .frame = {260, 21, 600, 16},
              .text = "Ready — select a device and press Start.",
              .font = Font::system,
              .fontPixels = 10,
              .white = 0.52},
};

}  // namespace

std::span<const LayoutRow> layoutRows() noexcept {
  return kRows;
}

}  // namespace tolvane
