// libjack, loaded at run time, so that one package serves machines with and without JACK.
#pragma once

#include <jack/jack.h>
#include <jack/metadata.h>
#include <jack/session.h>

namespace tolvane::hal {

/// libjack's functions, under their own names without the prefix.
struct JackLibrary {
  decltype(&jack_client_open) clientOpen = nullptr;
  decltype(&jack_client_close) clientClose = nullptr;
  decltype(&jack_get_client_name) getClientName = nullptr;
  decltype(&jack_get_uuid_for_client_name) getUuidForClientName = nullptr;
  decltype(&jack_activate) activate = nullptr;
  decltype(&jack_deactivate) deactivate = nullptr;
  decltype(&jack_free) free = nullptr;

  decltype(&jack_get_sample_rate) getSampleRate = nullptr;
  decltype(&jack_get_buffer_size) getBufferSize = nullptr;
  decltype(&jack_set_buffer_size) setBufferSize = nullptr;
  decltype(&jack_get_cycle_times) getCycleTimes = nullptr;

  decltype(&jack_get_ports) getPorts = nullptr;
  decltype(&jack_port_by_name) portByName = nullptr;
  decltype(&jack_port_by_id) portById = nullptr;
  decltype(&jack_port_flags) portFlags = nullptr;
  decltype(&jack_port_name) portName = nullptr;
  decltype(&jack_port_register) portRegister = nullptr;
  decltype(&jack_port_get_buffer) portGetBuffer = nullptr;
  decltype(&jack_port_name_size) portNameSize = nullptr;
  decltype(&jack_port_get_aliases) portGetAliases = nullptr;
  decltype(&jack_port_set_alias) portSetAlias = nullptr;
  decltype(&jack_connect) connect = nullptr;

  decltype(&jack_set_process_callback) setProcessCallback = nullptr;
  decltype(&jack_set_buffer_size_callback) setBufferSizeCallback = nullptr;
  decltype(&jack_set_sample_rate_callback) setSampleRateCallback = nullptr;
  decltype(&jack_set_xrun_callback) setXrunCallback = nullptr;
  decltype(&jack_set_port_registration_callback) setPortRegistrationCallback = nullptr;
  decltype(&jack_set_port_connect_callback) setPortConnectCallback = nullptr;
  decltype(&jack_set_client_registration_callback) setClientRegistrationCallback = nullptr;
  decltype(&jack_on_shutdown) onShutdown = nullptr;
  decltype(&jack_on_info_shutdown) onInfoShutdown = nullptr;

  // Null in libraries without metadata.
  decltype(&jack_port_uuid) portUuid = nullptr;
  decltype(&jack_get_property) getProperty = nullptr;
  decltype(&jack_set_property_change_callback) setPropertyChangeCallback = nullptr;

  decltype(&jack_set_error_function) setErrorFunction = nullptr;
  decltype(&jack_set_info_function) setInfoFunction = nullptr;

  /// True if the library is PipeWire's replacement for libjack.
  bool isPipeWire = false;
  /// True if the library is jackd 2's.
  bool isJackd2 = false;

  /// The process's libjack, with its messages switched off. Null if the machine has none or it lacks a
  /// function. Loaded at the first call and never unloaded, because its own threads may outlive everything
  /// else. [not-io]
  static const JackLibrary* get();
};

}  // namespace tolvane::hal
