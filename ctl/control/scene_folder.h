#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/result.h"
#include "ctl/control/route_list.h"
#include "ctl/terminal/failure.h"

namespace tolvane::ctl::control {

/// A scene as it was read.
struct Scene {
  std::string name;
  std::vector<Route> routes;
};

/// A folder of scenes. Each is a patch file whose name ends in ".json"; the rest is the scene's name. Files
/// whose name is no scene's name are not listed. [main-thread]
class SceneFolder {
 public:
  explicit SceneFolder(std::string path) : path_(std::move(path)) {}

  /// The names. Those that begin with a number come first, in the order of the numbers; the others follow in
  /// the order of their bytes. Failure: the folder cannot be read.
  [[nodiscard]] Result<std::vector<std::string>, Failure> names() const;

  /// Reads a scene, by its name or by its place in names(), counted from 1. Failure: there is no such scene,
  /// the file is no regular file or larger than 1 MiB, or it is no patch that can be routed.
  [[nodiscard]] Result<Scene, Failure> read(const std::variant<std::string, std::int64_t>& scene) const;

  /// The text of a scene's file with these routes. What is not ours in the present file stays, if that is a
  /// scene. Failure: the text is larger than 1 MiB.
  [[nodiscard]] Result<std::string, Failure> textOf(std::string_view name,
                                                    const std::vector<Route>& routes) const;

  /// A scene's file is being written: from now on this is the scene's text for names(), read() and textOf().
  void noteSaving(std::string name, std::string text);
  /// The oldest text noted has been written, or could not be. The file counts again.
  void noteSaveEnd();

  /// The file of a scene.
  [[nodiscard]] std::string fileOf(std::string_view name) const;

  /// Why a text cannot be a scene's name: it is empty, longer than 100 bytes, no UTF-8, begins with a full
  /// stop or holds a slash or a control character. None if it can.
  [[nodiscard]] static std::optional<std::string> problemOf(std::string_view name);

 private:
  struct Saving {
    std::string name;
    std::string text;
  };
  /// The newest text of a scene that is being written; null if none is.
  [[nodiscard]] const std::string* savingText(std::string_view name) const;
  /// The text of a scene that is there. Failure: as for read().
  [[nodiscard]] Result<std::string, Failure> sceneText(std::string_view name) const;

  std::string path_;
  std::deque<Saving> saving_;
};

}  // namespace tolvane::ctl::control
