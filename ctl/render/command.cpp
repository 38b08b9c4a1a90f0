#include "ctl/render/command.h"

#include <csignal>

#include "ctl/files/atomic_file.h"
#include "ctl/patch/source.h"
#include "ctl/render/plan.h"
#include "ctl/render/renderer.h"
#include "ctl/render/sound_file.h"
#include "ctl/terminal/messages.h"

namespace tolvane::ctl {

namespace {

std::optional<Failure> renderFile(const RenderOptions& options, const Routes& routes) {
  auto reader = SoundReader::open(options.inputPath, options.partial);
  if (!reader) return reader.error();
  if (auto failure = overwritesASource(options)) return failure;
  const auto outputs = outputChannelCount(options, routes);
  if (!outputs) return outputs.error();
  SoundReader source = std::move(reader).value();
  for (const std::string& note : silentRouteNotes(routes, source.channels(), outputs.value())) say(note);

  // In this order: the writer is destroyed, and so closed, before its file.
  auto pending = AtomicFile::create(options.outputPath);
  if (!pending) return pending.error();
  AtomicFile file = std::move(pending).value();
  auto writer = SoundWriter::create(options.outputPath, file.descriptor(),
                                    {outputs.value(), source.sampleRateHz(), source.frames()});
  if (!writer) return writer.error();
  SoundWriter sink = std::move(writer).value();
  if (auto failure = Renderer(source, sink, routes, outputs.value(), options.bufferFrames).run()) {
    return failure;
  }
  if (auto failure = sink.finish()) return failure;
  if (const auto shortfall = source.shortfall()) say(*shortfall);
  return file.commit();
}

}  // namespace

ExitStatus renderCommand(const RenderOptions& options) {
  std::signal(SIGXFSZ, SIG_IGN);  // a file size limit then fails the write, which cleans up

  const PatchResult routes = loadPatch(options.patchPath);
  if (!routes) return fail(routes.error());
  if (const auto note = unheardRoutesNote(options.patchPath, routes.value())) say(*note);
  if (const auto failure = renderFile(options, routes.value())) return fail(*failure);
  return ExitStatus::done;
}

}  // namespace tolvane::ctl
