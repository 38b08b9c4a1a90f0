#include "hal/jack/jack_library.h"

#include <optional>
#include <string_view>

#include <dlfcn.h>

namespace tolvane::hal {
namespace {

void discardMessage(const char* /*message*/) {}

/// Looks functions up, and remembers whether one was missing.
class Resolver {
 public:
  explicit Resolver(void* handle) noexcept : handle_(handle) {}

  template <class Function>
  Function find(const char* symbol) noexcept {
    return reinterpret_cast<Function>(dlsym(handle_, symbol));
  }

  template <class Function>
  void resolve(Function& function, const char* symbol) noexcept {
    function = find<Function>(symbol);
    complete_ = complete_ && function != nullptr;
  }

  [[nodiscard]] bool complete() const noexcept { return complete_; }

 private:
  void* handle_;
  bool complete_ = true;
};

void resolveClient(Resolver& from, JackLibrary& to) noexcept {
  from.resolve(to.clientOpen, "jack_client_open");
  from.resolve(to.clientClose, "jack_client_close");
  from.resolve(to.getClientName, "jack_get_client_name");
  from.resolve(to.getUuidForClientName, "jack_get_uuid_for_client_name");
  from.resolve(to.activate, "jack_activate");
  from.resolve(to.deactivate, "jack_deactivate");
  from.resolve(to.free, "jack_free");
  from.resolve(to.getSampleRate, "jack_get_sample_rate");
  from.resolve(to.getBufferSize, "jack_get_buffer_size");
  from.resolve(to.setBufferSize, "jack_set_buffer_size");
  from.resolve(to.getCycleTimes, "jack_get_cycle_times");
  from.resolve(to.setErrorFunction, "jack_set_error_function");
  from.resolve(to.setInfoFunction, "jack_set_info_function");
}

void resolvePorts(Resolver& from, JackLibrary& to) noexcept {
  from.resolve(to.getPorts, "jack_get_ports");
  from.resolve(to.portByName, "jack_port_by_name");
  from.resolve(to.portById, "jack_port_by_id");
  from.resolve(to.portFlags, "jack_port_flags");
  from.resolve(to.portName, "jack_port_name");
  from.resolve(to.portRegister, "jack_port_register");
  from.resolve(to.portGetBuffer, "jack_port_get_buffer");
  from.resolve(to.connect, "jack_connect");
}

void resolveCallbacks(Resolver& from, JackLibrary& to) noexcept {
  from.resolve(to.setProcessCallback, "jack_set_process_callback");
  from.resolve(to.setBufferSizeCallback, "jack_set_buffer_size_callback");
  from.resolve(to.setSampleRateCallback, "jack_set_sample_rate_callback");
  from.resolve(to.setXrunCallback, "jack_set_xrun_callback");
  from.resolve(to.setPortRegistrationCallback, "jack_set_port_registration_callback");
  from.resolve(to.setClientRegistrationCallback, "jack_set_client_registration_callback");
  from.resolve(to.onShutdown, "jack_on_shutdown");
  from.resolve(to.onInfoShutdown, "jack_on_info_shutdown");
}

/// Older libraries have no version text, and are not PipeWire's.
bool saysPipeWire(Resolver& library) noexcept {
  const auto versionText = library.find<decltype(&jack_get_version_string)>("jack_get_version_string");
  return versionText != nullptr && std::string_view(versionText()).find("PipeWire") != std::string_view::npos;
}

std::optional<JackLibrary> load() noexcept {
  void* handle = dlopen("libjack.so.0", RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return std::nullopt;
  Resolver resolver(handle);
  JackLibrary library;
  resolveClient(resolver, library);
  resolvePorts(resolver, library);
  resolveCallbacks(resolver, library);
  if (!resolver.complete()) return std::nullopt;
  // It writes to standard error otherwise: with every look whether there is a server, too.
  library.setErrorFunction(&discardMessage);
  library.setInfoFunction(&discardMessage);
  library.isPipeWire = saysPipeWire(resolver);
  return library;
}

}  // namespace

const JackLibrary* JackLibrary::get() {
  static const std::optional<JackLibrary> library = load();
  return library ? &*library : nullptr;
}

}  // namespace tolvane::hal
