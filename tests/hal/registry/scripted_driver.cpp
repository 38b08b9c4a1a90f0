#include "hal/registry/scripted_driver.h"

#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include "hal/driver/buffer_list.h"

namespace tolvane::test {

using hal::DeviceInfo;

void Latch::close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
}

void Latch::open() {
  const std::lock_guard lock(mutex_);
  closed_ = false;
  opened_.notify_all();
}

void Latch::pass() {
  std::unique_lock lock(mutex_);
  if (closed_) ++held_;
  opened_.wait(lock, [this] { return !closed_; });
}

int Latch::held() const {
  const std::lock_guard lock(mutex_);
  return held_;
}

class ScriptedSession final : public hal::Session {
 public:
  explicit ScriptedSession(Script& script) : script_(script) {}
  ScriptedSession(const ScriptedSession&) = delete;
  ScriptedSession& operator=(const ScriptedSession&) = delete;
  ~ScriptedSession() override {
    script_.ending.pass();
    const std::lock_guard lock(script_.mutex_);
    --script_.liveSessions_;
  }

 private:
  Script& script_;
};

class ScriptedDriver final : public hal::Driver {
 public:
  explicit ScriptedDriver(Script& script) : script_(script) {}

  [[nodiscard]] const char* name() const noexcept override { return "scripted"; }

  std::vector<DeviceInfo> devices() override {
    std::vector<DeviceInfo> devices;
    std::chrono::milliseconds time{0};
    {
      const std::lock_guard lock(script_.mutex_);
      ++script_.listings_;
      time = script_.listingTime_;
      if (script_.exhausted_) throw std::system_error(EMFILE, std::generic_category());
      wasSilent_ = script_.silent_;
      if (!wasSilent_) devices = script_.devices_;
    }
    std::this_thread::sleep_for(time);
    script_.listing.pass();
    return devices;
  }

  [[nodiscard]] bool awaitsServer() const override { return wasSilent_; }

  [[nodiscard]] std::string server() const override {
    const std::lock_guard lock(script_.mutex_);
    return script_.server_;
  }

  hal::StartResult start(const DeviceInfo& device, hal::SessionClient& client) override {
    script_.starting.pass();
    const std::lock_guard lock(script_.mutex_);
    if (script_.startStatus_ != noErr) return {script_.startStatus_, nullptr};
    script_.startedWith_.push_back(device);
    script_.clients_.push_back(&client);
    ++script_.liveSessions_;
    return {noErr, std::make_unique<ScriptedSession>(script_)};
  }

  void setObserver(hal::DeviceObserver& observer) override {
    const std::lock_guard lock(script_.mutex_);
    if (script_.notifies_) script_.observer_ = &observer;
  }

  OSStatus setBufferFrames(const DeviceInfo& device, std::uint32_t frames) override {
    return change(device, [=](DeviceInfo& info) { info.bufferFrames = frames; });
  }

  OSStatus setSampleRate(const DeviceInfo& device, double rateHz) override {
    return change(device, [=](DeviceInfo& info) { info.sampleRateHz = rateHz; });
  }

  OSStatus setPeriods(const DeviceInfo& device, std::uint32_t periods) override {
    return change(device, [=](DeviceInfo& info) { info.periods = periods; });
  }

  OSStatus claim(const DeviceInfo& card) override {
    return change(card, [](DeviceInfo& info) {
      info.isHeld = false;
      info.alsaCards.clear();  // listed whoever else lists the card
    });
  }

 private:
  template <typename Change>
  OSStatus change(const DeviceInfo& device, const Change& change) {
    script_.setting.pass();
    const std::lock_guard lock(script_.mutex_);
    if (script_.settingStatus_ != noErr) return script_.settingStatus_;
    for (DeviceInfo& info : script_.devices_) {
      if (info.uid == device.uid) change(info);
    }
    return noErr;
  }

  Script& script_;
  bool wasSilent_ = false;  // at the last devices()
};

std::unique_ptr<hal::Driver> Script::makeDriver() {
  auto driver = std::make_unique<ScriptedDriver>(*this);
  const std::lock_guard lock(mutex_);
  driver_ = driver.get();
  return driver;
}

void Script::setDevices(std::vector<DeviceInfo> devices) {
  const std::lock_guard lock(mutex_);
  devices_ = std::move(devices);
}

void Script::notify() {
  const std::lock_guard lock(mutex_);
  if (observer_ != nullptr) observer_->devicesChanged(*driver_);
}

void Script::setServer(const std::string& server) {
  const std::lock_guard lock(mutex_);
  server_ = server;
}

void Script::setSilent(bool silent) {
  const std::lock_guard lock(mutex_);
  silent_ = silent;
}

void Script::setExhausted(bool exhausted) {
  const std::lock_guard lock(mutex_);
  exhausted_ = exhausted;
}

void Script::setNotifies(bool notifies) {
  const std::lock_guard lock(mutex_);
  notifies_ = notifies;
}

void Script::setListingTime(std::chrono::milliseconds time) {
  const std::lock_guard lock(mutex_);
  listingTime_ = time;
}

void Script::setStartStatus(OSStatus status) {
  const std::lock_guard lock(mutex_);
  startStatus_ = status;
}

void Script::setSettingStatus(OSStatus status) {
  const std::lock_guard lock(mutex_);
  settingStatus_ = status;
}

int Script::listings() const {
  const std::lock_guard lock(mutex_);
  return listings_;
}

int Script::starts() const {
  const std::lock_guard lock(mutex_);
  return static_cast<int>(startedWith_.size());
}

int Script::liveSessions() const {
  const std::lock_guard lock(mutex_);
  return liveSessions_;
}

std::vector<DeviceInfo> Script::startedWith() const {
  const std::lock_guard lock(mutex_);
  return startedWith_;
}

bool Script::cycle(std::uint32_t frames) {
  std::size_t newest = 0;
  {
    const std::lock_guard lock(mutex_);
    if (liveSessions_ == 0) return false;
    newest = clients_.size() - 1;
  }
  cycleOf(newest, frames);
  return true;
}

float Script::firstOutputAfterCycleOf(std::size_t index, std::uint32_t frames) {
  hal::SessionClient* client = nullptr;
  DeviceInfo device;
  {
    const std::lock_guard lock(mutex_);
    client = clients_[index];
    device = startedWith_[index];
  }
  // Every frame of input channel n holds n + 1; every output sample is -1.
  std::vector<std::vector<float>> samples;
  const auto fill = [&](hal::BufferList& list, const hal::StreamLayout& streams, bool input) {
    for (std::size_t s = 0; s < streams.size(); ++s) {
      samples.emplace_back(std::size_t{streams[s]} * frames, input ? static_cast<float>(s + 1) : -1.0F);
      list.set(s, streams[s], frames, samples.back().data());
    }
  };
  hal::BufferList input(device.inputStreams.size());
  hal::BufferList output(device.outputStreams.size());
  samples.reserve(device.inputStreams.size() + device.outputStreams.size());
  fill(input, device.inputStreams, true);
  fill(output, device.outputStreams, false);
  const AudioTimeStamp now{};
  client->cycle({&now, &input.list(), &now, &output.list(), &now});
  return samples[device.inputStreams.size()][0];
}

bool Script::overload() {
  const std::lock_guard lock(mutex_);
  if (liveSessions_ == 0) return false;
  clients_.back()->overload();
  return true;
}

bool Script::setAlive(bool alive) {
  const std::lock_guard lock(mutex_);
  if (liveSessions_ == 0) return false;
  clients_.back()->aliveChanged(alive);
  return true;
}

bool Script::setFormat(double sampleRateHz, std::uint32_t bufferFrames) {
  const std::lock_guard lock(mutex_);
  if (liveSessions_ == 0) return false;
  clients_.back()->formatChanged(sampleRateHz, bufferFrames);
  return true;
}

bool Script::removeLinks(const hal::RemovedLinks& removed) {
  const std::lock_guard lock(mutex_);
  if (liveSessions_ == 0) return false;
  clients_.back()->linksRemoved(removed);
  return true;
}

DeviceInfo scriptedDevice(const std::string& uid, std::size_t inputs, std::size_t outputs) {
  DeviceInfo info;
  info.uid = uid;
  info.name = "Device " + uid;
  info.inputStreams = hal::StreamLayout(inputs, 1);
  info.outputStreams = hal::StreamLayout(outputs, 1);
  info.sampleRateHz = 48000.0;
  info.bufferFrames = 256;
  info.minBufferFrames = 32;
  info.maxBufferFrames = 4096;
  return info;
}

}  // namespace tolvane::test
