#include "ctl/control/file_writer.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "ctl/files/atomic_file.h"
#include "ctl/patch/source.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl::control {

namespace {

std::optional<Failure> changedMeanwhile(const std::string& path, const std::vector<std::string>& expected) {
  if (::access(path.c_str(), F_OK) != 0) return std::nullopt;
  const auto text = readPatchText(path, Readable::regularFile);
  if (!text) return text.error();
  if (std::find(expected.begin(), expected.end(), text.value()) != expected.end()) return std::nullopt;
  return Failure{about(path, "has changed since it was read, and was not replaced")};
}

std::optional<Failure> write(const FileWriter::Job& job) {
  if (job.expected) {
    if (auto failure = changedMeanwhile(job.path, *job.expected)) return failure;
  }
  auto file = AtomicFile::create(job.path);
  if (!file) return file.error();
  AtomicFile target = std::move(file).value();
  if (!target.write(job.text)) return systemFailure(job.path, errno);
  return target.commit();
}

}  // namespace

FileWriter::~FileWriter() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
}

std::optional<Failure> FileWriter::start(Job job) {
  if (running_ >= kMostJobs) return Failure{"too many files wait to be written"};
  if (!thread_.joinable()) {
    try {
      thread_ = std::thread([this] { work(); });
    } catch (const std::system_error&) {
      return Failure{"no thread is left to write files"};
    }
  }
  {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
  }
  ++running_;
  changed_.notify_one();
  return std::nullopt;
}

void FileWriter::finish() {
  while (wake_.next()) {
  }
  std::deque<Ended> ended;
  {
    const std::lock_guard lock(mutex_);
    ended.swap(ended_);
  }
  for (const Ended& each : ended) {
    --running_;
    each.job.done(each.failure);
  }
}

void FileWriter::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return isEnding_ || !jobs_.empty(); });
    if (jobs_.empty()) return;
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    auto failure = write(job);
    lock.lock();
    ended_.push_back({std::move(job), std::move(failure)});
    wake_.wake(1);
  }
}

}  // namespace tolvane::ctl::control
