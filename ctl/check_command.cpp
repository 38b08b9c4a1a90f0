#include "ctl/check_command.h"

#include <algorithm>
#include <cstdio>

#include "ctl/messages.h"
#include "ctl/patch_source.h"
#include "ctl/route_table.h"

namespace tolvane::ctl {

namespace {

ExitStatus checkFile(const std::string& path) {
  const PatchResult routes = loadPatch(path);
  if (!routes) return fail(routes.error());
  std::printf("%s:\n%s", path.c_str(), routeTable(routes.value()).c_str());
  if (const auto note = unheardRoutesNote(path, routes.value())) say(*note);
  return ExitStatus::done;
}

}  // namespace

ExitStatus checkCommand(const std::vector<std::string>& paths) {
  ExitStatus worst = ExitStatus::done;  // their numbers rank them: a bad patch above an unreadable file
  for (const std::string& path : paths) worst = std::max(worst, checkFile(path));
  return worst;
}

}  // namespace tolvane::ctl
