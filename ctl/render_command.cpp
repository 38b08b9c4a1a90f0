#include "ctl/render_command.h"

#include <algorithm>
#include <csignal>
#include <vector>

#include "ctl/messages.h"
#include "ctl/offline_router.h"
#include "ctl/patch_source.h"
#include "ctl/pending_file.h"
#include "ctl/progress_bar.h"
#include "ctl/render_plan.h"
#include "ctl/signal_pipe.h"
#include "ctl/sound_file.h"

namespace tolvane::ctl {

namespace {

/// Frames to read and write at once: whole cycles, about a quarter of a megabyte.
std::size_t framesAtOnce(std::size_t cycleFrames, std::int32_t channels) {
  constexpr std::size_t kSamplesAtOnce = 65536;
  const std::size_t samplesACycle = cycleFrames * static_cast<std::size_t>(channels);
  return cycleFrames * std::max<std::size_t>(1, kSamplesAtOnce / samplesACycle);
}

/// Whether a file takes long enough for a progress bar: a minute of sound.
bool isLong(const SoundReader& reader) {
  return reader.frames().value_or(0) >= std::int64_t{60} * reader.sampleRateHz();
}

class Renderer {
 public:
  Renderer(SoundReader& reader, SoundWriter& writer, const Routes& routes, std::int32_t outputs,
           std::int32_t cycleFrames)
      : reader_(reader),
        writer_(writer),
        router_(routes, reader.channels(), outputs),
        inputs_(static_cast<std::size_t>(reader.channels())),
        outputs_(static_cast<std::size_t>(outputs)),
        cycleFrames_(static_cast<std::size_t>(cycleFrames)),
        blockFrames_(framesAtOnce(cycleFrames_, std::max(reader.channels(), outputs))),
        input_(blockFrames_ * inputs_),
        output_(blockFrames_ * outputs_) {}

  /// Everything from the reader into the writer. Failure: one of theirs, or a signal that ends the program.
  std::optional<Failure> run(const SignalPipe& signals) {
    ProgressBar bar(reader_.frames(), isLong(reader_));
    for (std::int64_t done = 0;;) {
      if (signals.next()) return Failure{"interrupted, nothing was written"};
      const auto frames = reader_.read(input_.data(), blockFrames_);
      if (!frames) return frames.error();
      if (frames.value() == 0) return std::nullopt;
      routeBlock(frames.value());
      if (auto failure = writer_.write(output_.data(), frames.value())) return failure;
      done += static_cast<std::int64_t>(frames.value());
      bar.show(done);
    }
  }

 private:
  void routeBlock(std::size_t frames) noexcept {
    for (std::size_t first = 0; first < frames; first += cycleFrames_) {
      router_.route(&input_[first * inputs_], &output_[first * outputs_],
                    std::min(cycleFrames_, frames - first));
    }
  }

  SoundReader& reader_;
  SoundWriter& writer_;
  OfflineRouter router_;
  std::size_t inputs_;
  std::size_t outputs_;
  std::size_t cycleFrames_;
  std::size_t blockFrames_;
  std::vector<float> input_;
  std::vector<float> output_;
};

std::optional<Failure> renderFile(const RenderOptions& options, const Routes& routes,
                                  const SignalPipe& signals) {
  auto reader = SoundReader::open(options.inputPath);
  if (!reader) return reader.error();
  if (auto failure = overwritesASource(options)) return failure;
  const auto outputs = outputChannelCount(options, routes);
  if (!outputs) return outputs.error();
  SoundReader source = std::move(reader).value();
  for (const std::string& note : silentRouteNotes(routes, source.channels(), outputs.value())) say(note);

  // In this order, so that the writer is closed before its file is given up.
  auto pending = PendingFile::create(options.outputPath);
  if (!pending) return pending.error();
  PendingFile file = std::move(pending).value();
  auto writer = SoundWriter::create(options.outputPath, file.descriptor(),
                                    {outputs.value(), source.sampleRateHz(), source.frames()});
  if (!writer) return writer.error();
  SoundWriter sink = std::move(writer).value();
  if (auto failure = Renderer(source, sink, routes, outputs.value(), options.bufferFrames).run(signals)) {
    return failure;
  }
  if (auto failure = sink.finish()) return failure;
  return file.commit();
}

}  // namespace

ExitStatus renderCommand(const RenderOptions& options) {
  SignalPipe signals({SIGINT, SIGTERM, SIGHUP});
  signals.admit();
  std::signal(SIGXFSZ, SIG_IGN);  // a file size limit is then a failed write, which cleans up

  const PatchResult routes = loadPatch(options.patchPath);
  if (!routes) return fail(routes.error());
  if (const auto note = unheardRoutesNote(options.patchPath, routes.value())) say(*note);
  if (const auto failure = renderFile(options, routes.value(), signals)) return fail(*failure);
  return ExitStatus::done;
}

}  // namespace tolvane::ctl
