#include "ctl/remote/report.h"

#include <nlohmann/json.hpp>

#include "ctl/terminal/decimal.h"
#include "ctl/terminal/printable.h"
#include "ctl/terminal/text_table.h"

namespace tolvane::ctl::remote {

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& json) {
  return printable(json.get<std::string>());
}
std::string numberOf(const Json& json) {
  return plainDecimal(json.get<double>());
}
std::string percentOf(const Json& json) {
  return plainDecimal(static_cast<double>(static_cast<int>(json.get<double>() * 1000.0)) / 10.0) + " %";
}

std::string nameOf(const Json& names, const Json& channel) {
  const auto number = channel.get<double>();  // a file may name channels that no integer holds
  if (number < 1.0 || number > static_cast<double>(names.size())) return {};
  return names[static_cast<std::size_t>(number) - 1].get<std::string>();
}

std::string dumpText(const Json& dump) {
  if (dump.at("routes").empty()) return "no routes\n";
  using Align = TextTable::Align;
  TextTable table({{"input", Align::right},
                   {"output", Align::right},
                   {"gain", Align::right},
                   {"dB", Align::right},
                   {"active"},
                   {"from"},
                   {"to"},
                   {"label"}});
  for (const Json& route : dump.at("routes")) {
    const auto gain = route.at("gain").get<float>();
    table.addRow({numberOf(route.at("input")), numberOf(route.at("output")), shortestDecimal(gain),
                  decibels(gain), route.at("active").get<bool>() ? "yes" : "no",
                  nameOf(dump.at("inputs"), route.at("input")),
                  nameOf(dump.at("outputs"), route.at("output")), route.at("label").get<std::string>()});
  }
  return table.text();
}

std::string statusText(const Json& status) {
  const Json& device = status.at("device");
  const std::string gone = device.at("alive").get<bool>() ? "" : " (gone)";
  std::string text = "device: " + textOf(device.at("name")) + gone + '\n';
  text += "channels: " + numberOf(device.at("inputs")) + " in, " + numberOf(device.at("outputs")) + " out\n";
  text += "rate: " + numberOf(device.at("sampleRate")) + " Hz, " + numberOf(device.at("bufferFrames")) +
          " frames\n";
  text += "cycles: " + numberOf(device.at("cycles")) + '\n';
  const Json& overloads = device.at("overloads");
  text += "overloads: " + numberOf(overloads.at("device")) + " of the device, " +
          numberOf(overloads.at("callback")) + " of the callback\n";
  text += "load: " + percentOf(device.at("load")) + ", at most " + percentOf(device.at("peakLoad")) + '\n';
  text += "routes: " + numberOf(status.at("routes")) + ", heard " + numberOf(status.at("heard")) + '\n';
  text += "undo: " + numberOf(status.at("undo")) + ", redo: " + numberOf(status.at("redo")) + '\n';
  text +=
      "patch: " + textOf(status.at("patch")) + (status.at("saved").get<bool>() ? "" : " (not saved)") + '\n';
  if (!status.at("scene").get<std::string>().empty()) text += "scene: " + textOf(status.at("scene")) + '\n';
  return text;
}

std::string scenesText(const Json& scenes) {
  std::string text;
  for (const Json& name : scenes) text += textOf(name) + '\n';
  return text;
}

std::string pairText(const Json& route) {
  return numberOf(route.at("input")) + " to " + numberOf(route.at("output"));
}

std::string changeText(const Json& event) {
  std::string text = numberOf(event.at("serial")) + ' ' + textOf(event.at("cause")) + '\n';
  for (const Json& route : event.at("routes")) {
    text += "  " + pairText(route) + ": " + decibels(route.at("gain").get<float>()) + " dB" +
            (route.at("active").get<bool>() ? "" : ", muted");
    const std::string label = textOf(route.at("label"));
    text += (label.empty() ? "" : ", " + label) + '\n';
  }
  for (const Json& pair : event.at("removed")) text += "  " + pairText(pair) + ": removed\n";
  return text;
}

}  // namespace

std::string answerText(const Json& answer) {
  if (answer.contains("status")) return statusText(answer.at("status"));
  if (answer.contains("routes")) return dumpText(answer);
  if (answer.contains("scenes")) return scenesText(answer.at("scenes"));
  return {};
}

std::string eventText(const Json& event) {
  const auto name = event.at("event").get<std::string>();
  if (name == "changed") return changeText(event);
  if (name == "scenes") return "scenes: " + std::to_string(event.at("scenes").size()) + '\n';
  if (name == "names") return "the channels have other names\n";
  return {};
}

}  // namespace tolvane::ctl::remote
