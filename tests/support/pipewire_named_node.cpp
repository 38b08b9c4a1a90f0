#include "support/pipewire_named_node.h"

#include <stdexcept>

#include "hal/pipewire/pipewire_headers.h"

namespace tolvane::test {

namespace {

pw_properties* newProperties(const PipeWireProperties& properties) {
  pw_properties* const made = pw_properties_new(nullptr, nullptr);
  for (const auto& [key, value] : properties) pw_properties_set(made, key.c_str(), value.c_str());
  return made;
}

}  // namespace

struct PipeWireNamedNode::State {
  PipeWireClient& client;
  pw_filter* filter = nullptr;
};

PipeWireNamedNode::PipeWireNamedNode(PipeWireClient& client, const std::string& name,
                                     const std::string& mediaClass,
                                     const std::vector<PipeWireProperties>& ports)
    : state_(std::make_unique<State>(State{client})) {
  const pw_direction direction = mediaClass == "Audio/Source" ? PW_DIRECTION_OUTPUT : PW_DIRECTION_INPUT;
  pw_thread_loop_lock(client.loop());
  state_->filter = pw_filter_new(client.core(), name.c_str(),
                                 newProperties({{PW_KEY_NODE_NAME, name},
                                                {PW_KEY_NODE_DESCRIPTION, name},
                                                {PW_KEY_MEDIA_CLASS, mediaClass},
                                                {PW_KEY_NODE_AUTOCONNECT, "false"}}));
  for (PipeWireProperties properties : ports) {
    properties[PW_KEY_FORMAT_DSP] = "32 bit float mono audio";
    pw_filter_add_port(state_->filter, direction, PW_FILTER_PORT_FLAG_MAP_BUFFERS, sizeof(int),
                       newProperties(properties), nullptr, 0);
  }
  const int error = pw_filter_connect(state_->filter, PW_FILTER_FLAG_RT_PROCESS, nullptr, 0);
  pw_thread_loop_unlock(client.loop());
  if (error < 0) throw std::runtime_error("the node " + name + " cannot be made");
}

PipeWireNamedNode::~PipeWireNamedNode() {
  pw_thread_loop_lock(state_->client.loop());
  pw_filter_destroy(state_->filter);
  pw_thread_loop_unlock(state_->client.loop());
}

}  // namespace tolvane::test
