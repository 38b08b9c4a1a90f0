#include "ctl/run/control_desk.h"

#include <algorithm>
#include <utility>

#include "ctl/devices/property.h"
#include "ctl/http/door.h"
#include "ctl/osc/door.h"
#include "ctl/terminal/messages.h"

namespace tolvane::ctl {

namespace {

std::size_t countOf(std::int64_t channels) {
  return static_cast<std::size_t>(std::max<std::int64_t>(0, channels));
}

double sampleRateHz(AudioDeviceID device) {
  return deviceProperty<Float64>(device, kAudioDevicePropertyNominalSampleRate).value_or(0.0);
}

control::Control::Config configOf(const RunOptions& options, const AudioDeviceInfo& device,
                                  std::function<control::DeviceStatus()> status) {
  control::Control::Config config;
  if (!options.sceneFolder.empty()) config.sceneFolder = options.sceneFolder;
  config.inputLabels.resize(countOf(device.inputChannels));
  config.outputLabels.resize(countOf(device.outputChannels));
  config.rampMs = options.rampMs;
  config.device = std::move(status);
  return config;
}

}  // namespace

ControlDesk::ControlDesk(const RunOptions& options, const AudioDeviceInfo& device, PatchSource& patch,
                         const Routes& routes, const MeterBank& bank, const DeviceEvents& events)
    : device_(device),
      bank_(bank),
      events_(events),
      levels_(countOf(device.inputChannels), countOf(device.outputChannels), sampleRateHz(device.id)),
      control_(configOf(options, device, [this] { return deviceStatus(); }), patch, routes, &levels_) {
  control::setLevelBank(&levels_);
}

ControlDesk::~ControlDesk() {
  control::setLevelBank(nullptr);
}

std::optional<Failure> ControlDesk::open(const DoorPlan& plan) {
  const std::string secured = plan.token ? ", with the token" : "";
  if (plan.osc) {
    auto opened = osc::openDoor(control_, *plan.osc, plan.token);
    if (!opened) return opened.error();
    OpenDoor door = std::move(opened).value();
    say("OSC at " + door.address.text() + secured);
    doors_.push_back(std::move(door.door));
  }
  if (plan.http) {
    auto opened = http::openDoor(control_, {*plan.http, plan.token, plan.tls});
    if (!opened) return opened.error();
    OpenDoor door = std::move(opened).value();
    say((plan.tls ? "https://" : "http://") + door.address.text() + '/' + secured);
    doors_.push_back(std::move(door.door));
  }
  return std::nullopt;
}

void ControlDesk::addSources(std::vector<pollfd>& sources) const {
  sources.push_back({control_.descriptor(), POLLIN, 0});
  for (const auto& door : doors_) sources.push_back({door->descriptor(), POLLIN, 0});
}

std::optional<ControlDesk::Time> ControlDesk::due(Time now) const {
  std::optional<Time> due = control_.due(now);
  for (const auto& door : doors_) {
    if (const auto its = door->due(now)) due = std::min(due.value_or(*its), *its);
  }
  return due;
}

std::optional<Routes> ControlDesk::receive(Time now) {
  for (const auto& door : doors_) door->receive(now);
  if (!control_.takeUnpublished()) return std::nullopt;
  return control_.routes();
}

void ControlDesk::send(Time now) {
  control_.tick(now);
  for (const auto& door : doors_) door->send(now);
}

void ControlDesk::setNames(const ChannelNames& names) {
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  for (std::int64_t c = 0; c < device_.inputChannels; ++c) inputs.push_back(names.ofInput(c));
  for (std::int64_t c = 0; c < device_.outputChannels; ++c) outputs.push_back(names.ofOutput(c));
  control_.setLabels(std::move(inputs), std::move(outputs));
}

void ControlDesk::setAlive(bool isAlive) {
  isAlive_ = isAlive;
  control_.deviceChanged();
}

control::DeviceStatus ControlDesk::deviceStatus() {
  const double rateHz = sampleRateHz(device_.id);
  if (rateHz > 0.0) levels_.setSampleRate(rateHz);
  const control::LoadReading load = levels_.load();
  return {.name = device_.name,
          .isAlive = isAlive_,
          .inputs = device_.inputChannels,
          .outputs = device_.outputChannels,
          .sampleRateHz = rateHz,
          .bufferFrames = deviceProperty<UInt32>(device_.id, kAudioDevicePropertyBufferFrameSize).value_or(0),
          .cycles = bank_.cycles(),
          .deviceOverloads = events_.overloads(),
          .callbackOverloads = load.overloads,
          .load = load.mean,
          .peakLoad = load.peak};
}

OSStatus controlledIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                          const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                          const AudioTimeStamp* outputTime, void* clientData) noexcept {
  const auto begin = std::chrono::steady_clock::now();
  const OSStatus status =
      meteredIoProc(device, now, inputData, inputTime, outputData, outputTime, clientData);
  if (control::LevelBank* levels = control::levelBank())
    levels->observe(inputData, outputData, std::chrono::steady_clock::now() - begin);
  return status;
}

}  // namespace tolvane::ctl
