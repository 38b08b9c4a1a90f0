// Stands in for the client library of an old PipeWire.
extern "C" __attribute__((visibility("default"))) const char* pw_get_library_version() {
  return "0.3.40";
}
