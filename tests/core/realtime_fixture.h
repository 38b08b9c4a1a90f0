// A patch of 64 routes and the watch on the thread that runs a cycle of it.
#pragma once

#include <cstdint>
#include <vector>

#include "routing_fixture.h"
#include "support/realtime_watch.h"

namespace tolvane::test {

class RealtimeTest : public RoutingTest {
 protected:
  RealtimeTest() {
    input_.add(2, 512, 0.5F).add(16, 512, 0.5F);
    for (int i = 0; i < 20; ++i) output_.add(1, 512);
    context_ = initialContext(18, 20);
    publishRoutes(64);
    // The first cycle of the process writes its trace, and the lazy linking of what is called is done.
    call(&halIOProc);
  }

  void publishRoutes(std::int64_t count) {
    std::vector<PatchConnection> routes(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; ++i) {
      routes[static_cast<std::size_t>(i)] = {i % 18, i % 20, i % 3 == 0 ? 1.0F : 0.5F, true};
    }
    publish(routes);
  }

  OSStatus call(AudioDeviceIOProc proc) {
    const AudioTimeStamp time{};
    return proc(1, &time, input_.get(), &time, output_.get(), &time, &context_);
  }

  RealtimeReport watch(AudioDeviceIOProc proc) {
    RealtimeWatch watch;
    call(proc);
    return watch.report();
  }
};

/// halIOProc and something that a callback must not do.
template <auto misdeed>
OSStatus routeAnd(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                  const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                  const AudioTimeStamp* outputTime, void* clientData) {
  misdeed();
  return halIOProc(device, now, inputData, inputTime, outputData, outputTime, clientData);
}

}  // namespace tolvane::test
