#include "hal/jack/jack_library.h"

#include <optional>
#include <string_view>

#include "hal/support/shared_library.h"

namespace tolvane::hal {
namespace {

void discardMessage(const char* /*message*/) {}

void resolveClient(SharedLibrary& from, JackLibrary& to) noexcept {
  from.resolve("jack_client_open", to.clientOpen);
  from.resolve("jack_client_close", to.clientClose);
  from.resolve("jack_get_client_name", to.getClientName);
  from.resolve("jack_get_uuid_for_client_name", to.getUuidForClientName);
  from.resolve("jack_activate", to.activate);
  from.resolve("jack_deactivate", to.deactivate);
  from.resolve("jack_free", to.free);
  from.resolve("jack_get_sample_rate", to.getSampleRate);
  from.resolve("jack_get_buffer_size", to.getBufferSize);
  from.resolve("jack_set_buffer_size", to.setBufferSize);
  from.resolve("jack_get_cycle_times", to.getCycleTimes);
  from.resolve("jack_set_error_function", to.setErrorFunction);
  from.resolve("jack_set_info_function", to.setInfoFunction);
}

void resolvePorts(SharedLibrary& from, JackLibrary& to) noexcept {
  from.resolve("jack_get_ports", to.getPorts);
  from.resolve("jack_port_by_name", to.portByName);
  from.resolve("jack_port_by_id", to.portById);
  from.resolve("jack_port_flags", to.portFlags);
  from.resolve("jack_port_name", to.portName);
  from.resolve("jack_port_register", to.portRegister);
  from.resolve("jack_port_get_buffer", to.portGetBuffer);
  from.resolve("jack_port_name_size", to.portNameSize);
  from.resolve("jack_port_get_aliases", to.portGetAliases);
  from.resolve("jack_port_set_alias", to.portSetAlias);
  from.resolve("jack_connect", to.connect);
}

void resolveCallbacks(SharedLibrary& from, JackLibrary& to) noexcept {
  from.resolve("jack_set_process_callback", to.setProcessCallback);
  from.resolve("jack_set_buffer_size_callback", to.setBufferSizeCallback);
  from.resolve("jack_set_sample_rate_callback", to.setSampleRateCallback);
  from.resolve("jack_set_xrun_callback", to.setXrunCallback);
  from.resolve("jack_set_port_registration_callback", to.setPortRegistrationCallback);
  from.resolve("jack_set_port_connect_callback", to.setPortConnectCallback);
  from.resolve("jack_set_client_registration_callback", to.setClientRegistrationCallback);
  from.resolve("jack_on_shutdown", to.onShutdown);
  from.resolve("jack_on_info_shutdown", to.onInfoShutdown);
}

void findMetadata(SharedLibrary& from, JackLibrary& to) noexcept {
  to.portUuid = from.find<decltype(to.portUuid)>("jack_port_uuid");
  to.getProperty = from.find<decltype(to.getProperty)>("jack_get_property");
  to.setPropertyChangeCallback =
      from.find<decltype(to.setPropertyChangeCallback)>("jack_set_property_change_callback");
}

/// Empty for old libraries.
std::string_view versionTextOf(SharedLibrary& file) noexcept {
  const auto versionText = file.find<decltype(&jack_get_version_string)>("jack_get_version_string");
  return versionText != nullptr ? versionText() : "";
}

std::optional<JackLibrary> load() noexcept {
  SharedLibrary file("libjack.so.0");
  JackLibrary library;
  resolveClient(file, library);
  resolvePorts(file, library);
  resolveCallbacks(file, library);
  findMetadata(file, library);
  if (!file.isComplete()) return std::nullopt;
  // Otherwise it writes to standard error, even for each check for a server.
  library.setErrorFunction(&discardMessage);
  library.setInfoFunction(&discardMessage);
  const std::string_view version = versionTextOf(file);
  library.isPipeWire = version.find("PipeWire") != std::string_view::npos;
  library.isJackd2 = !library.isPipeWire && version.starts_with("1.9.");
  return library;
}

}  // namespace

const JackLibrary* JackLibrary::get() {
  static const std::optional<JackLibrary> library = load();
  return library ? &*library : nullptr;
}

}  // namespace tolvane::hal
