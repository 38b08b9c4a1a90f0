#include "support/jack_session_client.h"

#include "core/routing/io_proc.h"

namespace tolvane::test {

JackSessionClient::JackSessionClient(std::int64_t inputs, std::int64_t outputs,
                                     std::span<const PatchConnection> routes)
    : context_(initialContext(inputs, outputs)) {
  writeConnections(&context_, routes);
}

void JackSessionClient::cycle(const hal::IoCycle& cycle) noexcept {
  routeCycle(cycle.input, cycle.output, &context_);
  now = *cycle.now;
  inputTime = *cycle.inputTime;
  outputTime = *cycle.outputTime;
  inputBuffers.assign(cycle.input->mBuffers, cycle.input->mBuffers + cycle.input->mNumberBuffers);
  outputBuffers.assign(cycle.output->mBuffers, cycle.output->mBuffers + cycle.output->mNumberBuffers);
  ++cycles;
}

}  // namespace tolvane::test
