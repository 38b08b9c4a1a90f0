// All changes of the route list, and its publication to a running engine.
#include <QLineEdit>
#include <algorithm>
#include <utility>

#include "app/connections_table.h"
#include "app/entry_parsing.h"
#include "app/required.h"
#include "app/tolvane_view_controller.h"
#include "engine/core_audio_engine.h"

namespace tolvane {
namespace {

std::string typed(const QLineEdit& field) {
  return field.text().toStdString();
}

/// Zero-based index of the one-based channel typed by the user.
std::optional<std::int64_t> channelIndex(const QLineEdit& field) {
  const auto channel = parseInteger(typed(field));
  if (!channel || *channel < 1) return std::nullopt;
  return *channel - 1;
}

}  // namespace

void TolvaneViewController::addConnection() {
  const auto input = channelIndex(required(inputChannelField_));
  const auto output = channelIndex(required(outputChannelField_));
  if (!input || !output) {
    setStatus(QStringLiteral("⚠️  Enter valid channel numbers."));
    return;
  }
  const float gain = parseGain(typed(required(gainField_))).value_or(1.0F);
  const PatchConnection candidate{*input, *output, gain, true};
  if (std::ranges::find(connections_, candidate) != connections_.end()) return;
  connections_.push_back(candidate);
  connectionsChanged();
}

void TolvaneViewController::removeConnection() {
  const int row = required(connectionsTableView_).selectedRow();
  if (row < 0 || static_cast<std::size_t>(row) >= connections_.size()) return;
  connections_.erase(connections_.begin() + row);
  connectionsChanged();
}

void TolvaneViewController::clearConnections() {
  replaceConnections({});
}

void TolvaneViewController::presetStereoToHeadphones() {
  const std::int64_t outputs = selectedDevice_ ? selectedDevice_->outputChannels : 2;
  const std::int64_t left = outputs > 2 ? outputs - 2 : 0;
  const std::int64_t right = outputs > 2 ? outputs - 1 : 1;
  replaceConnections({{0, left, 1.0F, true}, {1, right, 1.0F, true}});
  setStatus(QStringLiteral("Preset: Input 1 → Output ") + QString::number(left + 1) +
            QStringLiteral(",  Input 2 → Output ") + QString::number(right + 1));
}

void TolvaneViewController::presetThru12() {
  replaceConnections({{0, 0, 1.0F, true}, {1, 1, 1.0F, true}});
  setStatus(QStringLiteral("Preset: In 1 → Out 1,  In 2 → Out 2"));
}

void TolvaneViewController::toggleConnection(std::int64_t input, std::int64_t output) {
  // A click removes only an active route with gain 1.0. A route with another gain is the user's own work; a
  // click on its cell adds a plain route beside it.
  const PatchConnection plain{input, output, 1.0F, true};
  const auto found = std::ranges::find(connections_, plain);
  if (found == connections_.end()) {
    connections_.push_back(plain);
  } else {
    connections_.erase(found);
  }
  connectionsChanged();
}

void TolvaneViewController::replaceConnections(std::vector<PatchConnection> connections) {
  connections_ = std::move(connections);
  connectionsChanged();
}

void TolvaneViewController::connectionsChanged() {
  pushConnectionsToEngine();
  refreshUI();
}

void TolvaneViewController::pushConnectionsToEngine() {
  CoreAudioEngine& engine = CoreAudioEngine::shared();
  if (!engine.isRunning()) return;
  if (IOProcContext* const context = engine.contextPtr()) engine.writeConnections(context, connections_);
  setStatus(QStringLiteral("● Live  •  ") + QString::number(activeConnectionCount()) +
            QStringLiteral(" route(s) active"));
}

std::int64_t TolvaneViewController::activeConnectionCount() const {
  return std::ranges::count(connections_, true, &PatchConnection::active);
}

}  // namespace tolvane
