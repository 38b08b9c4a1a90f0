// A patch of 64 routes, and a watch on the thread that runs a cycle of it.
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
    // Before any watch, lets the first cycle write its trace and resolves lazily linked functions.
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

/// Does something that a callback must not do, then calls halIOProc.
template <auto misdeed>
OSStatus routeAnd(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* inputData,
                  const AudioTimeStamp* inputTime, AudioBufferList* outputData,
                  const AudioTimeStamp* outputTime, void* clientData) {
  misdeed();
  return halIOProc(device, now, inputData, inputTime, outputData, outputTime, clientData);
}

}  // namespace tolvane::test
