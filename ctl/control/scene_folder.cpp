#include "ctl/control/scene_folder.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <limits>
#include <utility>

#include <unistd.h>

#include "ctl/control/patch_text.h"
#include "ctl/patch/source.h"
#include "ctl/terminal/printable.h"

namespace tolvane::ctl::control {

namespace {

constexpr std::string_view kExtension = ".json";
constexpr std::size_t kLongestName = 100;
constexpr std::uintmax_t kLargestScene = std::uintmax_t{1} << 20U;

/// The number that a name begins with; the largest one for a name without.
std::uint64_t leadingNumber(const std::string& name) {
  std::uint64_t number = std::numeric_limits<std::uint64_t>::max();
  std::from_chars(name.data(), name.data() + name.size(), number);
  return number;
}

bool comesBefore(const std::string& a, const std::string& b) {
  return std::pair(leadingNumber(a), std::string_view(a)) < std::pair(leadingNumber(b), std::string_view(b));
}

}  // namespace

Result<std::vector<std::string>, Failure> SceneFolder::names() const {
  std::error_code error;
  std::vector<std::string> names;
  std::filesystem::directory_iterator entry(path_, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string file = entry->path().filename().string();
    if (!file.ends_with(kExtension)) continue;
    const std::string name = file.substr(0, file.size() - kExtension.size());
    std::error_code gone;
    if (!problemOf(name) && entry->is_regular_file(gone)) names.push_back(name);
  }
  if (error) return systemFailure(printable(path_), error.value());
  for (const Saving& saving : saving_) {
    if (std::find(names.begin(), names.end(), saving.name) == names.end()) names.push_back(saving.name);
  }
  std::sort(names.begin(), names.end(), &comesBefore);
  return names;
}

Result<Scene, Failure> SceneFolder::read(const std::variant<std::string, std::int64_t>& scene) const {
  std::string name;
  if (const auto* number = std::get_if<std::int64_t>(&scene)) {
    const auto list = names();
    if (!list) return list.error();
    const auto count = static_cast<std::int64_t>(list.value().size());
    if (*number < 1 || *number > count)
      return Failure{"there is no scene " + std::to_string(*number) + "; there are " + std::to_string(count)};
    name = list.value()[static_cast<std::size_t>(*number - 1)];
  } else {
    name = std::get<std::string>(scene);
    if (const auto problem = problemOf(name)) return Failure{*problem};
  }
  const auto text = sceneText(name);
  if (!text) return text.error();
  const PatchResult routes = parsePatch(fileOf(name), text.value());
  if (!routes) return routes.error();
  return Scene{name, PatchText(text.value(), routes.value()).routes()};
}

void SceneFolder::noteSaving(std::string name, std::string text) {
  saving_.push_back({std::move(name), std::move(text)});
}

void SceneFolder::noteSaveEnd() {
  saving_.pop_front();
}

const std::string* SceneFolder::savingText(std::string_view name) const {
  const auto newest = std::find_if(saving_.rbegin(), saving_.rend(),
                                   [&](const Saving& saving) { return saving.name == name; });
  return newest == saving_.rend() ? nullptr : &newest->text;
}

Result<std::string, Failure> SceneFolder::sceneText(std::string_view name) const {
  if (const std::string* text = savingText(name)) return *text;
  const std::string path = fileOf(name);
  if (::access(path.c_str(), F_OK) != 0 && errno == ENOENT)
    return Failure{"there is no scene \"" + std::string(name) + '"'};
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (!error && size > kLargestScene) return Failure{about(path, "larger than 1 MiB, so not a scene")};
  return readPatchText(path, Readable::regularFile);
}

Result<std::string, Failure> SceneFolder::textOf(std::string_view name,
                                                 const std::vector<Route>& routes) const {
  const std::string path = fileOf(name);
  PatchText present;
  if (const auto text = sceneText(name)) {
    if (const PatchResult its = parsePatch(path, text.value()))
      present = PatchText(text.value(), its.value());
  }
  std::string text = present.with(routes);
  if (text.size() > kLargestScene) return Failure{about(path, "would be larger than 1 MiB, so not a scene")};
  return text;
}

std::string SceneFolder::fileOf(std::string_view name) const {
  return path_ + '/' + std::string(name) + std::string(kExtension);
}

std::optional<std::string> SceneFolder::problemOf(std::string_view name) {
  if (name.empty()) return "the name of a scene cannot be empty";
  if (name.size() > kLongestName) return "the name of a scene has at most 100 bytes";
  if (printable(name) != name) return "the name of a scene must be UTF-8 without control characters";
  if (name.front() == '.' || name.find('/') != std::string_view::npos)
    return "the name of a scene cannot begin with a full stop or hold a slash";
  return std::nullopt;
}

}  // namespace tolvane::ctl::control
